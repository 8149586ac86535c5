#include "core/ConfigReader.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

namespace ferrivane {
namespace {

using Json = nlohmann::json;

// Walks the text for the parser and leaves its position where the reader can see it, so that an
// error of value can name its line too.
class TrackingIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    TrackingIterator(const char* at, const char** seen) : at_(at), seen_(seen) {}
    reference operator*() const { return *at_; }
    TrackingIterator& operator++() {
        *seen_ = ++at_;
        return *this;
    }
    TrackingIterator operator++(int) {
        TrackingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const TrackingIterator& other) const { return at_ == other.at_; }

  private:
    const char* at_;
    const char** seen_;
};

// A rule while its keys are being read.
struct PartialRule {
    std::optional<Rule::Kind> kind{};
    std::optional<std::string> match{};
    std::optional<std::string> profile{};
    std::optional<std::string> comment{};
    std::size_t line = 0;
};

// Takes the parser's events and builds the configuration. Every event returns whether to go on.
class Reader : public nlohmann::json_sax<Json> {
  public:
    explicit Reader(std::string_view text)
        : text_(text), seen_(text.data()), counted_(text.data()) {}

    std::expected<Config, ConfigError> read() {
        const char* const end = text_.data() + text_.size();
        if (Json::sax_parse(TrackingIterator(text_.data(), &seen_), TrackingIterator(end, &seen_),
                            this)) {
            // The library takes one between values for the end of the text.
            const std::size_t nul = text_.find('\0');
            if (nul == std::string_view::npos) return std::move(config_);
            syntaxError(nul + 1, "a NUL character");
        }
        return std::unexpected(std::move(error_));
    }

    bool null() override {
        switch (place()) {
            case Place::ignored:
            case Place::defaultProfile:
            case Place::logFullURLs:
            case Place::ruleComment:
                return reset();
            case Place::rules:
                config_.rules.clear();
                return true;
            default:
                return wrongType("null");
        }
    }

    bool boolean(bool value) override {
        if (place() == Place::ignored) return true;
        if (place() != Place::logFullURLs) return wrongType("a boolean");
        config_.logFullURLs = value;
        return true;
    }

    bool number_integer(Json::number_integer_t) override { return number(); }
    bool number_unsigned(Json::number_unsigned_t) override { return number(); }
    bool number_float(Json::number_float_t, const Json::string_t&) override { return number(); }
    bool binary(Json::binary_t&) override { return wrongType("binary data"); }

    bool string(Json::string_t& value) override {
        switch (place()) {
            case Place::ignored:
                return true;
            case Place::defaultProfile:
                config_.defaultProfile = std::move(value);
                return true;
            case Place::ruleKind:
                rule_.kind = kindFromRawValue(value);
                if (rule_.kind) return true;
                return valueError(here() + ": \"" + shortened(value) +
                                  "\" is not one of url, host, app");
            case Place::ruleMatch:
                rule_.match = std::move(value);
                return true;
            case Place::ruleProfile:
                rule_.profile = std::move(value);
                return true;
            case Place::ruleComment:
                rule_.comment = std::move(value);
                return true;
            default:
                return wrongType("a string");
        }
    }

    bool start_object(std::size_t) override {
        switch (place()) {
            case Place::ignored:
                ++ignoredDepth_;
                return true;
            case Place::top:
                level_ = Level::config;
                return true;
            case Place::rule:
                level_ = Level::rule;
                rule_ = PartialRule{.line = line()};
                return true;
            default:
                return wrongType("an object");
        }
    }

    bool key(Json::string_t& name) override {
        if (ignoredDepth_ == 0) key_ = std::move(name);
        return true;
    }

    bool end_object() override {
        if (ignoredDepth_ > 0) {
            --ignoredDepth_;
            return true;
        }
        if (level_ == Level::config) {
            level_ = Level::done;
            return true;
        }
        level_ = Level::rules;
        return finishRule();
    }

    bool start_array(std::size_t) override {
        switch (place()) {
            case Place::ignored:
                ++ignoredDepth_;
                return true;
            case Place::rules:
                config_.rules.clear();
                level_ = Level::rules;
                return true;
            default:
                return wrongType("an array");
        }
    }

    bool end_array() override {
        if (ignoredDepth_ > 0) {
            --ignoredDepth_;
        } else {
            level_ = Level::config;
        }
        return true;
    }

    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::detail::exception& exception) override {
        syntaxError(position, sentenceOf(exception.what()));
        return false;
    }

  private:
    enum class Level { outside, config, rules, rule, done };
    // Where the next value stands.
    enum class Place {
        top,
        defaultProfile,
        rules,
        logFullURLs,
        rule,
        ruleKind,
        ruleMatch,
        ruleProfile,
        ruleComment,
        ignored,
    };

    Place place() const {
        if (ignoredDepth_ > 0) return Place::ignored;
        switch (level_) {
            case Level::outside:
            case Level::done:
                return Place::top;
            case Level::config:
                if (key_ == "defaultProfile") return Place::defaultProfile;
                if (key_ == "rules") return Place::rules;
                if (key_ == "logFullURLs") return Place::logFullURLs;
                return Place::ignored;
            case Level::rules:
                return Place::rule;
            case Level::rule:
                if (key_ == "kind") return Place::ruleKind;
                if (key_ == "match") return Place::ruleMatch;
                if (key_ == "profile") return Place::ruleProfile;
                if (key_ == "comment") return Place::ruleComment;
                return Place::ignored;
        }
        return Place::ignored;
    }

    std::string rulePath() const { return "rules[" + std::to_string(config_.rules.size()) + "]"; }

    // The place of the value being read, as a path.
    std::string here() const {
        if (level_ == Level::rules) return rulePath();
        if (level_ == Level::rule) return rulePath() + "." + key_;
        return level_ == Level::config ? key_ : "top level";
    }

    std::string_view expected() const {
        switch (place()) {
            case Place::rules:
                return "an array";
            case Place::logFullURLs:
                return "true or false";
            case Place::top:
            case Place::rule:
                return "an object";
            default:
                return "a string";
        }
    }

    bool number() {
        if (place() == Place::ignored) return true;
        --seen_;  // the parser has read on to find the number's end
        return wrongType("a number");
    }

    bool wrongType(std::string_view found) {
        return valueError(here() + ": expected " + std::string(expected()) + ", found " +
                          std::string(found));
    }

    // A key whose value is null counts as absent, also when an equal key came before it.
    bool reset() {
        if (place() == Place::defaultProfile) config_.defaultProfile = Config().defaultProfile;
        if (place() == Place::logFullURLs) config_.logFullURLs = false;
        if (place() == Place::ruleComment) rule_.comment.reset();
        return true;
    }

    bool finishRule() {
        const char* missing = !rule_.kind      ? "kind"
                              : !rule_.match   ? "match"
                              : !rule_.profile ? "profile"
                                               : nullptr;
        if (missing != nullptr) {
            valueError(rulePath() + "." + missing + ": missing");
            error_.line = rule_.line;
            return false;
        }
        config_.rules.emplace_back(*rule_.kind, std::move(*rule_.match), std::move(*rule_.profile),
                                   std::move(rule_.comment));
        return true;
    }

    // Counts on from where it last stopped: it is asked once for each of any number of rules.
    std::size_t line() {
        line_ += static_cast<std::size_t>(std::count(counted_, seen_, '\n'));
        counted_ = seen_;
        return line_;
    }

    // At the last of the first `position` bytes.
    void syntaxError(std::size_t position, std::string detail) {
        const std::string_view before = text_.substr(0, std::min(position, text_.size()));
        const std::size_t newline = before.substr(0, before.size() - !before.empty()).rfind('\n');
        std::string_view lastLine =
            newline == std::string_view::npos ? before : before.substr(newline + 1);
        error_.kind = ConfigError::Kind::syntax;
        error_.line =
            1 + static_cast<std::size_t>(std::count(before.data(), lastLine.data(), '\n'));
        if (lastLine.starts_with("\uFEFF")) lastLine.remove_prefix(3);  // nobody sees it
        error_.column =
            std::max<std::size_t>(1, static_cast<std::size_t>(std::ranges::count_if(
                                         lastLine, [](char c) { return (c & 0xC0) != 0x80; })));
        error_.detail = std::move(detail);
    }

    bool valueError(std::string detail) {
        error_.kind = ConfigError::Kind::value;
        error_.line = line();
        error_.detail = std::move(detail);
        return false;
    }

    static std::string shortened(const std::string& value) {
        constexpr std::size_t kLongest = 60;
        if (value.size() <= kLongest) return value;
        std::size_t end = kLongest;
        while ((value[end] & 0xC0) == 0x80) --end;
        return value.substr(0, end) + "…";
    }

    // The library words its messages "[id] parse error at <where>: <sentence>; last read: <token>".
    // The sentence is what a person needs: where is said by us, and the token can be a megabyte.
    static std::string sentenceOf(std::string_view what) {
        if (what.starts_with("[json.exception.out_of_range")) return "a number is too large";
        if (const std::size_t where = what.find("parse error"); where != std::string_view::npos) {
            what.remove_prefix(where);
            if (const std::size_t colon = what.find(": "); colon != std::string_view::npos) {
                what.remove_prefix(colon + 2);
            }
        }
        constexpr std::string_view kLastRead = "; last read: '";
        const std::size_t token = what.find(kLastRead);
        if (token == std::string_view::npos) return std::string(what);
        std::string sentence(what.substr(0, token));
        // What was expected instead follows the token, which can hold these words too and is not
        // always UTF-8.
        for (const std::string_view expected :
             {"end of input", "string literal", "':'", "'}'", "']'", "'[', '{', or a literal"}) {
            const std::string rest = "; expected " + std::string(expected);
            if (what.ends_with("'" + rest)) return sentence + rest;
        }
        return sentence;
    }

    const std::string_view text_;
    const char* seen_;
    const char* counted_;   // up to here
    std::size_t line_ = 1;  // there are so many lines
    Config config_;
    ConfigError error_;
    PartialRule rule_;
    std::string key_;
    Level level_ = Level::outside;
    std::size_t ignoredDepth_ = 0;
};

}  // namespace

std::expected<Config, ConfigError> readConfig(std::string_view json) {
    return Reader(json).read();
}

}  // namespace ferrivane
