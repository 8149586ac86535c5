#include "Ferrivane/CLI.h"

#include <algorithm>
#include <filesystem>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/DefaultBrowser.h"
#include "Ferrivane/ProfileSource.h"
#include "Ferrivane/Texts.h"
#include "core/ChromeProfiles.h"
#include "core/Config.h"
#include "core/Log.h"
#include "core/Matcher.h"
#include "core/port/Paths.h"
#include "core/support/Text.h"

namespace ferrivane::CLI {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

std::filesystem::path logFile() {
    return Paths::logDirectory() / Log::kFileName;
}

std::string quotedIfSpaced(const std::string& text) {
    return text.find(' ') == std::string::npos ? text : "\"" + text + "\"";
}

// Exactly `width` characters as a person counts them.
std::string fitted(const std::string& text, std::size_t width) {
    if (const auto length = Text::prefixLength(text, width)) return text.substr(0, *length);
    std::size_t characters = 0;
    while (Text::prefixLength(text, characters + 1)) ++characters;
    return text + std::string(width - characters, ' ');
}

std::string commandLine(const Platform& platform, const std::string& url,
                        const std::optional<ChromeProfile>& profile) {
    std::string line = "<Chrome not found>";
    if (const auto chrome = ChromeLauncher::chromeAppURL(platform.applications)) {
        line = quotedIfSpaced(platform.applications.executable(*chrome).value_or(*chrome).string());
    }
    const auto directory =
        profile ? std::optional(profile->directory) : std::optional<std::string>();
    for (const std::string& argument : ChromeLauncher::arguments(url, directory)) {
        line += " " + quotedIfSpaced(argument);
    }
    return line;
}

std::string shownRule(const Decision& decision) {
    if (!decision.rule) return "none matched → default \"" + decision.profile + "\"";
    const Rule& rule = *decision.rule;
    std::string text = "#" + std::to_string(*decision.ruleIndex + 1) + " " +
                       std::string(rawValue(rule.kind)) + " \"" + rule.match + "\" → " +
                       rule.profile;
    if (rule.comment) text += "   // " + *rule.comment;
    return text;
}

ProfileSource::Profiles profilesOf(const Platform& platform) {
    std::optional<ProfileSource::Profiles> loaded;
    ProfileSource::load(platform,
                        [&](ProfileSource::Profiles profiles) { loaded = std::move(profiles); });
    if (!loaded) platform.mainLoop.runUntilIdle();
    return std::move(*loaded);
}

int test(const Commands::Test& command, const Platform& platform, std::ostream& out) {
    if (command.url.empty()) {
        out << usage(platform.desktop);
        return kWrongUsage;
    }
    const auto config = Config::load(Config::fileURL());
    if (!config) {
        out << "cannot read " << Config::fileURL().string() << ": " << config.error().description()
            << "\n";
        return kFailed;
    }
    std::optional<Opener> opener;
    if (command.from) opener = Opener{command.from, command.from, command.from};
    const Decision decision = Matcher::decide(command.url, opener, *config);
    const auto profiles = profilesOf(platform);
    const auto profile = profiles ? ChromeProfiles::resolve(decision.profile, *profiles)
                                  : std::optional<ChromeProfile>();

    out << "URL:      " << command.url << "\n";
    out << "Opener:   " << command.from.value_or("none") << "\n";
    out << "Rule:     " << shownRule(decision) << "\n";
    if (profile) {
        out << "Profile:  " << profile->name << " [" << profile->directory << "]";
        if (profile->email) out << " " << *profile->email;
        out << "\n";
    } else {
        out << "Profile:  \"" << decision.profile
            << "\" NOT FOUND in Chrome; would open without --profile-directory\n";
    }
    out << "Command:  " << commandLine(platform, command.url, profile) << "\n";
    return 0;
}

std::string agentState(const std::vector<pid_t>& processes) {
    if (processes.empty()) return "not running";
    std::string list;
    for (const pid_t process : processes) {
        if (!list.empty()) list += ", ";
        list += std::to_string(process);
    }
    return "running (pid " + list + ")";
}

void printProfiles(const Platform& platform, std::ostream& out) {
    const auto profiles = profilesOf(platform);
    if (!profiles) {
        out << "Profiles: cannot read (" << profiles.error() << ")\n";
        return;
    }
    constexpr std::size_t kNameWidth = 12;
    out << "Profiles:\n";
    for (const ChromeProfile& profile : *profiles) {
        out << "  " << fitted(profile.name, kNameWidth) << " [" << profile.directory << "]";
        if (profile.email) out << "  " << *profile.email;
        if (profile.hostedDomain) {
            out << (profile.email ? ", " : "  ") << "managed by " << *profile.hostedDomain;
        }
        out << "\n";
    }
}

int status(const Platform& platform, std::ostream& out) {
    const Applications& applications = platform.applications;
    out << "Ferrivane " << AppInfo::version(applications)
        << (AppInfo::isBundled(applications) ? "" : " (unbundled binary)") << "\n";
    out << "Sandbox:  " << (platform.isSandboxed ? textsFor(platform.desktop).sandboxed : "no")
        << "\n";

    std::error_code error;
    const bool hasConfig = std::filesystem::exists(Config::fileURL(), error);
    out << "Config:   " << Config::fileURL().string()
        << (hasConfig ? "" : "  (missing; created on first run)") << "\n";
    out << "Log:      " << logFile().string() << "\n";
    out << "Agent:    " << agentState(applications.running(AppInfo::bundleIdentifier)) << "\n";

    const auto handler = DefaultBrowser::handler(applications, "https");
    out << "Default browser: " << (handler ? handler->string() : "none") << "\n";
    if (const auto chrome = ChromeLauncher::chromeAppURL(applications)) {
        out << "Chrome:   " << chrome->string() << " ("
            << (platform.browser.running() ? "running" : "not running") << ")\n";
    } else {
        out << "Chrome:   NOT FOUND\n";
    }
    printProfiles(platform, out);
    return 0;
}

std::string fileName(const std::filesystem::path& application) {
    const bool isFolder = !application.has_filename();  // "Name.app/"
    return (isFolder ? application.parent_path() : application).filename().string();
}

// Whether every scheme has changed hands; says so of each.
bool verifyDefault(const std::filesystem::path& target, const Platform& platform, std::ostream& out,
                   std::ostream& err) {
    const Applications& applications = platform.applications;
    const auto wanted = applications.identifier(target);
    std::vector<std::string_view> unchanged;
    for (const std::string_view scheme : DefaultBrowser::schemes) {
        const auto handler = DefaultBrowser::handler(applications, scheme);
        const auto identifier = handler ? applications.identifier(*handler) : std::nullopt;
        out << "  " << scheme << ": ";
        if (identifier == wanted) {
            out << "ok\n";
        } else {
            out << "still " << (handler ? fileName(*handler) : "none") << "\n";
            unchanged.push_back(scheme);
        }
    }
    if (const auto setting = applications.overridingSetting(target, unchanged)) {
        err << "Ferrivane: " << *setting << "\n";
    }
    return unchanged.empty();
}

int setDefault(const Commands::SetDefault& command, const Platform& platform, std::ostream& out,
               std::ostream& err) {
    Applications& applications = platform.applications;
    const Texts& texts = textsFor(platform.desktop);
    std::filesystem::path target;
    if (command.bundleId) {
        const auto location = applications.location(*command.bundleId);
        if (!location) {
            out << "app " << *command.bundleId << " not found\n";
            return kFailed;
        }
        target = *location;
    } else if (AppInfo::isBundled(applications)) {
        target = applications.ownBundle().location;
    } else {
        out << texts.notInstalled << "\n";
        return kFailed;
    }
    // Before the desktop asks the person.
    out << texts.asking << fileName(target) << texts.askingEnd << "\n" << std::flush;

    bool isDone = false;
    bool isAwaited = false;
    DefaultBrowser::make(applications, target, [&](const DefaultBrowser::Failures& failures) {
        for (const auto& [scheme, error] : failures) {
            out << "  " << scheme << ": " << error.text << "\n";
        }
        isDone = true;
        if (isAwaited) platform.mainLoop.stop();
    });
    if (!isDone) {
        isAwaited = true;
        platform.mainLoop.run();
    }
    return verifyDefault(target, platform, out, err) ? 0 : kFailed;
}

template<typename... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

}  // namespace

std::optional<Command> parse(const std::vector<std::string>& arguments) {
    std::optional<std::string> testUrl;
    std::optional<std::string> from;
    std::optional<Command> command;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const bool isLast = i + 1 == arguments.size();
        if (argument == "--test") {
            if (isLast) return Commands::Test{"", from};
            testUrl = arguments[++i];
        } else if (argument == "--from") {
            from = isLast ? std::nullopt : std::optional(arguments[++i]);
        } else if (argument == "--status") {
            command = Commands::Status{};
        } else if (argument == "--set-default") {
            command = Commands::SetDefault{};
        } else if (argument == "--restore-default") {
            command = Commands::SetDefault{std::string(ChromeLauncher::chromeBundleIdentifier)};
        } else if (argument == "--help" || argument == "-h") {
            command = Commands::Help{};
        }
    }
    if (testUrl) return Commands::Test{*testUrl, from};
    return command;
}

int run(const Command& command, const Platform& platform, std::ostream& out, std::ostream& err) {
    return std::visit(
        Overloaded{
            [&](const Commands::Test& it) { return test(it, platform, out); },
            [&](const Commands::SetDefault& it) { return setDefault(it, platform, out, err); },
            [&](const Commands::Status&) { return status(platform, out); },
            [&](const Commands::Help&) {
                out << usage(platform.desktop);
                return 0;
            },
        },
        command);
}

std::string usage(Desktop desktop) {
    const Texts& texts = textsFor(desktop);
    constexpr std::size_t kSecondColumn = 34;
    std::string text = "Ferrivane — opens links in the right Google Chrome profile.\n\nUsage:\n";
    const auto line = [&](std::string first, std::string_view second) {
        if (!second.empty()) first.resize(std::max(first.size(), kSecondColumn), ' ');
        text += first.append(second).append("\n");
    };
    line("  Ferrivane", texts.usageAgent);
    line("  Ferrivane --test <url> [--from <app>]", "");
    line("", "show which profile a URL would open in; <app> is a bundle id,");
    line("", "app name or a substring of the app path, e.g. com.tdesktop.Telegram");
    line("  Ferrivane --status", "config path, Chrome profiles, current default browser");
    line("  Ferrivane --set-default", texts.usageSetDefault);
    line("  Ferrivane --restore-default", "make Google Chrome the default browser again");
    line("  Ferrivane --help", "");
    text += "\nConfig: " + Config::fileURL().string() + "\n";
    text += "Log:    " + logFile().string() + "\n";
    return text;
}

}  // namespace ferrivane::CLI
