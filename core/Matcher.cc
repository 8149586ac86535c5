#include "core/Matcher.h"

#include <string>

#include "core/support/Text.h"
#include "core/support/Url.h"

namespace ferrivane::Matcher {
namespace {

// One link and its opener, with what the rules compare worked out once, when the first rule asks.
class Subject {
  public:
    Subject(std::string_view url, const std::optional<Opener>& opener)
        : url_(url), opener_(opener) {}

    bool matches(const Rule& rule) {
        const std::string_view pattern = Text::trim(rule.match);
        if (pattern.empty()) return false;
        switch (rule.kind) {
            case Rule::Kind::url:
                return Text::contains(link(), folded(pattern));
            case Rule::Kind::host:
                return matchesHost(pattern);
            case Rule::Kind::app:
                return matchesApp(pattern);
        }
        return false;
    }

  private:
    // Most patterns are ASCII and share one buffer. A pattern beyond ASCII can match an ASCII link
    // all the same (the Kelvin sign folds to "k"), so none may be skipped.
    const std::string& folded(std::string_view pattern) {
        if (!Text::foldAscii(pattern, pattern_)) pattern_ = Text::foldCase(pattern);
        return pattern_;
    }

    const std::string& link() {
        if (!link_) link_ = Text::foldCase(url_);
        return *link_;
    }

    bool matchesHost(std::string_view pattern) {
        if (!hostKnown_) {
            hostKnown_ = true;
            if (const auto parsed = Url::parse(url_); parsed && parsed->host) {
                host_ = Text::lowerCase(*parsed->host);
            }
        }
        if (!host_) return false;
        if (!Text::foldAscii(pattern, pattern_)) pattern_ = Text::lowerCase(pattern);
        std::string_view name = pattern_;
        while (name.starts_with('.')) name.remove_prefix(1);
        while (name.ends_with('.')) name.remove_suffix(1);
        if (*host_ == name) return true;
        return host_->size() > name.size() && host_->ends_with(name) &&
               (*host_)[host_->size() - name.size() - 1] == '.';
    }

    bool matchesApp(std::string_view pattern) {
        if (!opener_) return false;
        if (!app_) {
            const auto fold = [](const std::optional<std::string>& text) {
                return text ? std::optional(Text::foldCase(*text)) : std::nullopt;
            };
            app_ = Opener{fold(opener_->name), fold(opener_->bundleId), fold(opener_->path)};
        }
        const std::string& sought = folded(pattern);
        return app_->bundleId == sought || app_->name == sought ||
               (app_->path && Text::contains(*app_->path, sought));
    }

    const std::string_view url_;
    const std::optional<Opener>& opener_;
    std::optional<std::string> link_;
    bool hostKnown_ = false;
    std::optional<std::string> host_;
    std::optional<Opener> app_;  // all three fields folded
    std::string pattern_;
};

}  // namespace

Decision decide(std::string_view url, const std::optional<Opener>& opener, const Config& config) {
    Subject subject(url, opener);
    for (std::size_t i = 0; i < config.rules.size(); ++i) {
        const Rule& rule = config.rules[i];
        if (subject.matches(rule)) return {rule.profile, static_cast<std::ptrdiff_t>(i), rule};
    }
    return {config.defaultProfile, std::nullopt, std::nullopt};
}

bool matches(const Rule& rule, std::string_view url, const std::optional<Opener>& opener) {
    return Subject(url, opener).matches(rule);
}

}  // namespace ferrivane::Matcher
