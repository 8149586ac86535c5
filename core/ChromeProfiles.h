// Reads Chrome's profile catalogue: the entries of "profile.info_cache" in its "Local State" file
// (Chromium's profile_attributes_storage.cc). Nothing is cached; callable from any thread.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/ChromeProfile.h"
#include "core/support/FileError.h"

namespace ferrivane::ChromeProfiles {

struct LoadError {
    enum class Kind {
        unreadable,  // the system refused
        notJson,
        malformed,  // JSON without profile.info_cache
    };

    Kind kind = Kind::malformed;
    std::filesystem::path path;
    FileError fileError{};  // unreadable
    std::string detail{};   // notJson: the parser's words

    std::string description() const;

    bool operator==(const LoadError&) const = default;
};

// "Local State" in the user data directory of the located browser.
std::filesystem::path localStateURL();

// Sorted by directory in code-point order. Entries that are no objects are skipped. Of equal keys
// in one object the last one counts, as in Chromium. A number that neither 64 bits nor a double can
// hold makes the text no JSON; Chromium writes none.
std::expected<std::vector<ChromeProfile>, LoadError> load(const std::filesystem::path& path);

// Reading keeps buffers of several times the file's size for the next time. Gives back those of the
// calling thread.
void releaseBuffers();

// The profile that a rule's text names: by directory (exactly), else by name, else by e-mail (both
// ignoring case). Absent for blank text.
std::optional<ChromeProfile> resolve(std::string_view requested,
                                     const std::vector<ChromeProfile>& profiles);

// A profile standing for the directory "Default" or "Profile <number>", for when there is no
// catalogue to look it up in.
std::optional<ChromeProfile> bareDirectory(std::string_view requested);

}  // namespace ferrivane::ChromeProfiles
