// The settings window's measures, in points (pixels at a scale of 100 %), and its name.
#pragma once

#include <string_view>

namespace ferrivane::SettingsWindow {

struct Size {
    int width = 0;
    int height = 0;
};

inline constexpr std::string_view title = "Ferrivane";
inline constexpr Size size{820, 620};
inline constexpr Size minimumSize{700, 520};
// Under which the place and the size that the person gave it are remembered.
inline constexpr std::string_view autosaveName = "Settings";

inline constexpr int padding = 20;
inline constexpr int defaultProfileWidth = 170;
inline constexpr int senderWidth = 190;
inline constexpr int listHeight = 160;  // at least
inline constexpr int listRadius = 5;
inline constexpr int insertionLineHeight = 2;

namespace Row {
inline constexpr Size padding{8, 5};  // at each side, above and below
inline constexpr Size handle{16, 24};
inline constexpr int kindWidth = 118;
inline constexpr int profileWidth = 150;
}  // namespace Row

}  // namespace ferrivane::SettingsWindow
