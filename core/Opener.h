// The application that sent a link, as far as it could be identified. A link whose sender is
// unknown has no opener at all.
#pragma once

#include <optional>
#include <string>

namespace ferrivane {

struct Opener {
    std::optional<std::string> name;      // as the desktop shows it to the user
    std::optional<std::string> bundleId;  // on Linux the desktop entry's id without ".desktop"
    std::optional<std::string> path;      // of the application bundle; on Linux of the executable

    // "Name (id)", or the first of name, id and path that is there, or "unknown app". An empty
    // string counts as there.
    std::string description() const;

    bool operator==(const Opener&) const = default;
};

}  // namespace ferrivane
