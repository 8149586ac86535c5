#include "Ferrivane/HelperScript.h"

#include <system_error>
#include <utility>

#include <unistd.h>

#include "Ferrivane/Texts.h"
#include "core/support/FileError.h"
#include "core/support/ReadFile.h"
#include "core/support/Uuid.h"

namespace ferrivane::HelperScript {
namespace {

namespace fs = std::filesystem;

using Kind = HelperError::Kind;

std::unexpected<HelperError> failure(const Platform& platform, Kind kind, std::string text = {}) {
    return std::unexpected(HelperError{kind, std::move(text), platform.desktop});
}

std::unexpected<HelperError> refused(const Platform& platform, std::string_view what,
                                     const std::error_code& error) {
    return failure(platform, Kind::platform,
                   std::string(what) + " failed: " + systemErrorText(error.value()));
}

bool isExecutableFile(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && ::access(file.c_str(), X_OK) == 0;
}

std::optional<std::string> bytesOf(const std::optional<fs::path>& file) {
    if (!file) return std::nullopt;
    auto bytes = readFile(*file);
    return bytes ? std::optional(std::move(*bytes)) : std::nullopt;
}

Result saveTo(const Platform& platform, const fs::path& bundled, const fs::path& file) {
    using fs::perms;
    constexpr perms kMode = perms::owner_all | perms::group_read | perms::group_exec |
                            perms::others_read | perms::others_exec;
    std::error_code error;
    fs::remove(file, error);
    if (error) return refused(platform, "remove", error);
    const char* step = "copy";
    if (fs::copy_file(bundled, file, error)) {
        step = "permissions";
        fs::permissions(file, kMode, error);
    }
    if (!error) return {};
    std::error_code ignored;
    fs::remove(file, ignored);  // half a script is none
    return refused(platform, step, error);
}

// The copy and what the script may have left beside it.
void removeCopy(const fs::path& copy) {
    std::error_code error;
    std::vector<fs::path> left;
    for (fs::directory_iterator entry(copy.parent_path(), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        if (name.starts_with(copy.filename().string())) left.push_back(entry->path());
    }
    for (const fs::path& file : left) fs::remove(file, error);
}

}  // namespace

std::string HelperError::description() const {
    switch (kind) {
        case Kind::notInstalled:
            return "helper script is not installed at " + text;
        case Kind::wrongFolder:
            return "choose " + std::string(textsFor(desktop).scriptsFolderName) + ", not " +
                   fs::path(text).filename().string();
        case Kind::noBundledScript:
            return "this build has no bundled helper script";
        case Kind::cancelled:
            return "installation cancelled";
        case Kind::profiles:
        case Kind::platform:
            return text;
    }
    return text;
}

bool isInstalled(const Platform& platform) {
    const auto directory = platform.scripts.directory();
    return directory && isExecutableFile(*directory / fileName);
}

State state(const Platform& platform) {
    if (!platform.isSandboxed) return State::notNeeded;
    if (!isInstalled(platform)) return State::missing;
    const auto installed = bytesOf(*platform.scripts.directory() / fileName);
    return installed == bytesOf(platform.scripts.bundledHelper()) ? State::ready : State::outdated;
}

void install(const Platform& platform, Log& log, std::function<void(Result)> completion) {
    const auto bundled = platform.scripts.bundledHelper();
    if (!bundled) return completion(failure(platform, Kind::noBundledScript));
    const auto directory = platform.scripts.directory();
    const Texts& texts = textsFor(platform.desktop);
    if (!directory) {
        return completion(failure(platform, Kind::notInstalled, std::string(texts.scriptsFolder)));
    }
    if (const auto made = platform.scripts.makeDirectory(); !made) {
        return completion(failure(platform, Kind::platform, made.error().text));
    }
    log.info("installing helper: panel opening at " + directory->string());
    platform.savePanel.show(
        {.directory = *directory,
         .fileName = std::string(fileName),
         .button = "Install Helper",
         .title = "Install Ferrivane Helper",
         .message = std::string(texts.saveHelper)},
        [platform, &log, bundled = *bundled,
         completion = std::move(completion)](const SavePanel::Answer& answer) {
            log.info("installing helper: panel returned " + std::to_string(answer.response));
            if (answer.response != SavePanel::ok || !answer.file) {
                return completion(failure(platform, Kind::cancelled));
            }
            const Result saved = saveTo(platform, bundled, *answer.file);
            if (saved) log.info("helper script installed at " + answer.file->string());
            completion(saved);
        });
}

void revealForManualInstall(const Platform& platform, Log& log) {
    const auto bundled = platform.scripts.bundledHelper();
    const auto directory = platform.scripts.directory();
    if (!bundled || !directory) return;
    log.info("helper install: revealing " + bundled->string() + " and " + directory->string() +
             " " + std::string(textsFor(platform.desktop).inFileManager));
    platform.scripts.select(*bundled);
    platform.scripts.openFolder(*directory);
}

void run(const Platform& platform, const std::vector<std::string>& arguments,
         const std::optional<std::string>& activationToken,
         std::function<void(Result)> completion) {
    const auto directory = platform.scripts.directory();
    if (!directory) {
        return completion(failure(platform, Kind::notInstalled,
                                  std::string(textsFor(platform.desktop).scriptsFolder)));
    }
    const fs::path script = *directory / fileName;
    if (!isExecutableFile(script)) {
        return completion(failure(platform, Kind::notInstalled, script.string()));
    }
    platform.scripts.run(
        script, arguments, activationToken,
        [platform, completion = std::move(completion)](const auto& outcome) {
            completion(outcome ? Result()
                               : failure(platform, Kind::platform, outcome.error().text));
        });
}

void loadProfiles(const Platform& platform, std::function<void(Profiles)> completion) {
    const fs::path copy = platform.scripts.temporaryDirectory() /
                          ("chrome-local-state-" + Uuid::random().text() + ".json");
    run(platform, {"profiles", copy.string()}, std::nullopt,
        [platform, copy, completion = std::move(completion)](const Result& outcome) {
            if (!outcome) {
                completion(std::unexpected(outcome.error()));
            } else if (auto profiles = ChromeProfiles::load(copy)) {
                completion(std::move(*profiles));
            } else {
                completion(failure(platform, Kind::profiles, profiles.error().description()));
            }
            removeCopy(copy);
        });
}

}  // namespace ferrivane::HelperScript
