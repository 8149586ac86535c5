// Which application a control group belongs to, by the names that desktops give to the systemd
// units of applications (systemd.io, Desktop Environment Integration) and that Snap gives to its
// own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ferrivane::AppUnit {

// Desktop ids that the group's path may stand for, the likeliest first; empty when it holds no unit
// of an application. A unit's name does not tell where the launcher's name ends and the id begins,
// so whoever asks tries one after the other.
std::vector<std::string> candidateIds(std::string_view controlGroup);

}  // namespace ferrivane::AppUnit
