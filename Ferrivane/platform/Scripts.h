// The folder of scripts that may run outside the sandbox. Main thread only; every completion is
// called exactly once, on the main thread.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Ferrivane/platform/Browser.h"

namespace ferrivane {

class Scripts {
  public:
    virtual ~Scripts() = default;

    // Absent when the system does not tell. It need not exist.
    virtual std::optional<std::filesystem::path> directory() const = 0;
    // Makes it where the system leaves that to us.
    virtual std::expected<void, PlatformError> makeDirectory() = 0;
    // The helper that was installed with the program.
    virtual std::optional<std::filesystem::path> bundledHelper() const = 0;
    // For files that a script writes and we read.
    virtual std::filesystem::path temporaryDirectory() const = 0;

    // Runs a script of the folder outside the sandbox, its standard streams unset, with a token
    // that lets what it starts come to the front. An exit status other than 0 is an error.
    virtual void run(const std::filesystem::path& script, const std::vector<std::string>& arguments,
                     const std::optional<std::string>& activationToken,
                     std::function<void(std::expected<void, PlatformError>)> completion) = 0;

    // Shows a file selected in the file manager, and opens a folder there.
    virtual void select(const std::filesystem::path& file) = 0;
    virtual void openFolder(const std::filesystem::path& folder) = 0;
};

}  // namespace ferrivane
