#include "Ferrivane/linux/Senders.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include <unistd.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/linux/AppUnit.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/ExecLine.h"
#include "Ferrivane/linux/Processes.h"
#include "core/support/ReadFile.h"

namespace ferrivane::Senders {
namespace {

constexpr int kMostSteps = 12;

// Programs that open a link for somebody else. A shell is one too: a link from a terminal is the
// terminal's.
constexpr std::array<std::string_view, 40> kLaunchers{
    "xdg-open",    "gio",           "gvfs-open",   "kde-open",
    "kde-open5",   "kioclient",     "kioclient5",  "kfmclient",
    "exo-open",    "gtk-launch",    "gtk4-launch", "run-mailcap",
    "mimeopen",    "x-www-browser", "www-browser", "sensible-browser",
    "sh",          "dash",          "bash",        "zsh",
    "fish",        "ksh",           "mksh",        "busybox",
    "env",         "nohup",         "setsid",      "timeout",
    "sudo",        "doas",          "xargs",       "nice",
    "stdbuf",      "gdbus",         "dbus-send",   "busctl",
    "systemd-run", "flatpak-spawn", "strace",      "kde-open6",
};

// Behind these nobody sent the link: the session itself, its services, portals.
constexpr std::array<std::string_view, 14> kSession{
    "systemd",         "init",          "dbus-daemon",   "dbus-broker",     "dbus-launch",
    "startplasma",     "gnome-session", "xfce4-session", "lxsession",       "mate-session",
    "cinnamon-sessio", "login",         "sshd",          "xdg-desktop-por",
};

constexpr std::array<std::string_view, 10> kInterpreters{
    "python", "perl", "ruby", "node", "gjs", "gjs-console", "java", "lua", "php", "tclsh",
};

template<std::size_t N>
bool isOneOf(std::string_view name, const std::array<std::string_view, N>& names) {
    return std::ranges::find(names, name) != names.end();
}

// Also "gnome-session-binary" and its like, and names that the kernel has cut.
bool isSessionPart(std::string_view name) {
    constexpr std::size_t kLongestCommand = 15;
    return std::ranges::any_of(kSession, [&](std::string_view part) {
        return name.starts_with(part) && (name.size() == part.size() || name[part.size()] == '-' ||
                                          part.size() == kLongestCommand);
    });
}

// "python3.11" is "python".
bool isInterpreter(std::string_view name) {
    return std::ranges::any_of(kInterpreters, [&](std::string_view interpreter) {
        return name.starts_with(interpreter) &&
               name.find_first_not_of("0123456789.", interpreter.size()) == std::string_view::npos;
    });
}

bool isOwnExecutable(const std::filesystem::path& executable) {
    static const auto own = Processes::executable(::getpid());
    return own == executable;
}

// The script that an interpreter runs, absolute; absent for code given in other ways.
std::optional<std::filesystem::path> script(pid_t process) {
    const std::vector<std::string> arguments = Processes::arguments(process);
    if (arguments.size() < 2 || arguments[1].empty() || arguments[1][0] == '-') return {};
    const auto directory = Processes::workingDirectory(process);
    return (directory.value_or("/") / arguments[1]).lexically_normal();
}

// "python3 -m webbrowser <link>"
bool isWebbrowserModule(pid_t process) {
    const std::vector<std::string> arguments = Processes::arguments(process);
    return arguments.size() > 2 && arguments[1] == "-m" && arguments[2] == "webbrowser";
}

bool isLauncher(pid_t process, std::string_view name) {
    return isOneOf(name, kLaunchers) || isWebbrowserModule(process);
}

Opener openerOf(const DesktopEntry& entry, const std::filesystem::path& path) {
    return {entry.name.empty() ? entry.id : entry.name, entry.id, path.string()};
}

// An application found by its id alone: there is no process that we know to be its main one.
Opener openerOf(const DesktopEntry& entry) {
    const auto program = entry.isFlatpak ? std::nullopt : entry.program();
    return openerOf(entry, program.value_or(entry.file));
}

std::optional<Opener> fromControlGroup(std::string_view group, const DesktopEntries& entries) {
    for (const std::string& id : AppUnit::candidateIds(group)) {
        // A desktop that starts each application in a unit of its own does so with this program.
        if (id == AppInfo::bundleIdentifier) continue;
        if (const auto entry = entries.find(id)) return openerOf(*entry);
    }
    return std::nullopt;
}

// Inside a Flatpak sandbox the root has a file that names the application (flatpak-run(1)).
std::optional<Opener> fromFlatpak(pid_t process, const DesktopEntries& entries) {
    const auto text = readFile("/proc/" + std::to_string(process) + "/root/.flatpak-info");
    if (!text) return std::nullopt;
    constexpr std::string_view kName = "\nname=";
    const std::size_t group = text->find("[Application]");
    const std::size_t name = group == std::string::npos ? group : text->find(kName, group);
    if (name == std::string::npos) return std::nullopt;
    const std::size_t start = name + kName.size();
    const std::string id = text->substr(start, text->find('\n', start) - start);
    if (const auto entry = entries.find(id)) return openerOf(*entry, entry->file);
    return Opener{std::nullopt, id, std::nullopt};
}

// The name under which the process was started, where that is a link to its executable and called
// otherwise, as the alternatives of Debian are (update-alternatives(1)).
std::optional<std::filesystem::path> otherName(pid_t process,
                                               const std::filesystem::path& executable) {
    const std::vector<std::string> arguments = Processes::arguments(process);
    if (arguments.empty()) return std::nullopt;
    const std::filesystem::path name = arguments[0];
    if (name.filename() == executable.filename()) return std::nullopt;
    auto file = ExecLine::findProgram(arguments[0]);
    std::error_code error;
    const bool isSame = file && std::filesystem::equivalent(*file, executable, error);
    return isSame ? file : std::nullopt;
}

struct Program {
    std::filesystem::path file;       // of the executable
    std::filesystem::path standsFor;  // the script that it interprets, else the same
};

std::optional<Opener> fromProgram(pid_t process, const Program& program,
                                  const DesktopEntries& entries) {
    if (!isInterpreter(program.standsFor.filename().string())) {
        if (const auto entry = entries.findByProgram(program.standsFor)) {
            return openerOf(*entry, program.standsFor);
        }
        if (const auto name = otherName(process, program.file)) {
            if (const auto entry = entries.findByProgram(*name)) {
                return openerOf(*entry, program.file);
            }
        }
    }
    const auto environment = Processes::environment(process);
    const auto variable = [&](const char* name) {
        const auto found = environment.find(name);
        return found == environment.end() ? std::string() : found->second;
    };
    // The one who started it said which entry it is, for this very process.
    const std::filesystem::path launchedAs = variable("GIO_LAUNCHED_DESKTOP_FILE");
    if (variable("GIO_LAUNCHED_DESKTOP_FILE_PID") == std::to_string(process)) {
        if (const auto entry = DesktopEntry::read(launchedAs, launchedAs.stem().string())) {
            return openerOf(*entry, program.file);
        }
    }
    // A single-file application is mounted somewhere else each time; the file is what it is known
    // by.
    const std::filesystem::path image = variable("APPIMAGE");
    const std::string mount = variable("APPDIR");
    if (!image.empty() && !mount.empty() && program.file.string().starts_with(mount + "/")) {
        const auto entry = entries.findByProgram(image);
        return entry ? openerOf(*entry, image) : Opener{std::nullopt, std::nullopt, image.string()};
    }
    return std::nullopt;
}

struct Found {
    std::optional<Opener> application;
    std::optional<Opener> program;  // the first process that is somebody, though no application
};

Found walk(pid_t process, const DesktopEntries& entries) {
    Found found;
    for (int step = 0; step < kMostSteps && process > 1; ++step) {
        const auto status = Processes::status(process);
        if (!status) break;
        const auto executable = Processes::executable(process);
        const std::string name = executable ? executable->filename().string() : status->command;
        const bool isCarrier = executable && isOwnExecutable(*executable);
        if (isCarrier || isLauncher(process, name)) {
            process = status->parent;
            continue;
        }
        if (isSessionPart(name)) break;
        if (auto known = application(process, entries)) return {std::move(known), {}};
        if (executable && !found.program) {
            found.program = Opener{std::nullopt, std::nullopt, executable->string()};
        }
        process = status->parent;
    }
    return found;
}

// GTK's form "program-PID-host-sequence-place_TIME…"; the process when it is alive.
pid_t processOfStartupId(std::string_view id) {
    for (std::size_t dash = id.find('-'); dash != std::string_view::npos;
         dash = id.find('-', dash + 1)) {
        pid_t process = 0;
        const char* const end = id.data() + id.size();
        const auto [rest, error] = std::from_chars(id.data() + dash + 1, end, process);
        if (error == std::errc() && rest != end && *rest == '-' && process > 1) {
            const auto status = Processes::status(process);
            return status && status->state != 'Z' ? process : 0;
        }
    }
    return 0;
}

}  // namespace

bool isLauncher(pid_t process) {
    const auto executable = Processes::executable(process);
    return executable && isLauncher(process, executable->filename().string());
}

std::optional<Opener> application(pid_t process, const DesktopEntries& entries) {
    if (auto flatpak = fromFlatpak(process, entries)) return flatpak;
    const auto executable = Processes::executable(process);
    if (executable && !isLauncher(process, executable->filename().string())) {
        Program program{*executable, *executable};
        if (isInterpreter(executable->filename().string())) {
            program.standsFor = script(process).value_or(*executable);
        }
        if (auto opener = fromProgram(process, program, entries)) return opener;
    }
    const auto group = Processes::controlGroup(process);
    return group ? fromControlGroup(*group, entries) : std::nullopt;
}

Origin ownOrigin() {
    return {::getppid(), Processes::controlGroup(::getpid()).value_or(""),
            environment("DESKTOP_STARTUP_ID")};
}

std::optional<Opener> opener(const Origin& origin, const DesktopEntries& registry) {
    const DesktopEntries entries = registry.snapshot();
    const Found found = walk(origin.sender, entries);
    if (found.application) return found.application;
    if (auto fromUnit = fromControlGroup(origin.controlGroup, entries)) return fromUnit;
    if (const pid_t process = processOfStartupId(origin.startupId); process > 1) {
        if (auto started = walk(process, entries).application) return started;
    }
    return found.program;
}

}  // namespace ferrivane::Senders
