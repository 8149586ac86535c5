#include "Ferrivane/linux/LinuxScripts.h"

#include <memory>
#include <utility>

#include <unistd.h>

#include "Ferrivane/HelperScript.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Spawn.h"
#include "core/port/Paths.h"
#include "core/support/AtomicFile.h"
#include "core/support/FileError.h"

namespace ferrivane {
namespace {

using Completion = std::function<void(std::expected<void, PlatformError>)>;

constexpr std::chrono::milliseconds kInterval{100};

// A script on its way to its end.
struct Run {
    Completion completion;

    bool isOver() const { return !completion; }
    void finish(std::expected<void, PlatformError> outcome) {
        std::exchange(completion, nullptr)(std::move(outcome));
    }
};

}  // namespace

std::optional<std::filesystem::path> LinuxScripts::directory() const {
    const std::filesystem::path data = environment("XDG_DATA_HOME");
    return (data.is_absolute() ? data : Paths::home() / ".local/share") / "ferrivane/scripts";
}

std::expected<void, PlatformError> LinuxScripts::makeDirectory() {
    if (const auto made = AtomicFile::createFolders(*directory()); !made) {
        return std::unexpected(PlatformError{made.error().description()});
    }
    return {};
}

// Beside the program in a build folder; in the data folder of its prefix once installed.
std::optional<std::filesystem::path> LinuxScripts::bundledHelper() const {
    const auto folder = Processes::executable(::getpid()).value_or("/").parent_path();
    for (const auto& place : {folder, (folder / FERRIVANE_DATA_FOLDER).lexically_normal()}) {
        auto file = place / HelperScript::fileName;
        if (::access(file.c_str(), R_OK) == 0) return file;
    }
    return std::nullopt;
}

// A Flatpak's /tmp is its own; its cache is the same folder inside and outside.
std::filesystem::path LinuxScripts::temporaryDirectory() const {
    std::filesystem::path cache = environment("XDG_CACHE_HOME");
    if (hostSpawn_.isNeeded() && cache.is_absolute()) return cache;
    std::error_code error;
    auto folder = std::filesystem::temp_directory_path(error);
    return error ? "/tmp" : folder;
}

void LinuxScripts::run(const std::filesystem::path& script,
                       const std::vector<std::string>& arguments,
                       const std::optional<std::string>& activationToken,
                       std::function<void(std::expected<void, PlatformError>)> completion) {
    std::vector<std::string> command{script.string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const auto child =
        spawnDetached(hostSpawn_.command(std::move(command), activationToken), activationToken);
    if (!child) {
        return completion(std::unexpected(
            PlatformError{"cannot start the helper script: " + systemErrorText(child.error())}));
    }
    auto run = std::make_shared<Run>(Run{std::move(completion)});
    loop_.watchChild(*child, [run](int status) {
        if (status == 0) return run->finish({});
        run->finish(std::unexpected(
            PlatformError{"the helper script ended with status " + std::to_string(status)}));
    });
    const auto look = [this, run, child = *child,
                       end = loop_.now() + limit_](const auto& again) -> void {
        if (run->isOver()) return;
        if (loop_.now() >= end) {
            loop_.forgetChild(child);
            return run->finish(std::unexpected(PlatformError{"the helper script does not end"}));
        }
        loop_.after(kInterval, [again] { again(again); });
    };
    look(look);
}

void LinuxScripts::select(const std::filesystem::path& file) {
    if (DesktopServices* const services = desktopServices()) services->select(file);
}

void LinuxScripts::openFolder(const std::filesystem::path& folder) {
    if (DesktopServices* const services = desktopServices()) (void)services->open(folder);
}

}  // namespace ferrivane
