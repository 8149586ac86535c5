// What the settings window consists of, by the names that assistive programs and tests find it
// under; the same in every shell.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace ferrivane {

struct Control {
    std::string_view identifier;  // stable, never shown
    std::string_view name;        // read out; empty where the text that is shown says it
};

namespace SettingsControls {

inline constexpr Control window{"settings", ""};
inline constexpr Control defaultBrowserText{"defaultBrowser.text", ""};
inline constexpr Control makeDefault{"defaultBrowser.make", ""};
inline constexpr Control helperText{"helper.text", ""};
inline constexpr Control installHelper{"helper.install", ""};
inline constexpr Control showFolders{"helper.showFolders", ""};
inline constexpr Control rules{"rules", "Rules"};
inline constexpr Control noRules{"rules.none", ""};
inline constexpr Control addRule{"rules.add", ""};
inline constexpr Control defaultProfile{"rules.defaultProfile", "Default profile"};
inline constexpr Control testURL{"tester.url", "Link to try"};
inline constexpr Control testApp{"tester.app", "Sent by"};
inline constexpr Control testResult{"tester.result", ""};
inline constexpr Control menuBarIcon{"options.menuBarIcon", ""};
inline constexpr Control editRules{"options.editRules", ""};
inline constexpr Control showLog{"options.showLog", ""};
inline constexpr Control version{"options.version", ""};
inline constexpr Control problem{"problem", ""};
// Of each rule.
inline constexpr Control rule{"rule", "Rule"};
inline constexpr Control handle{"rule.handle", "Drag to reorder"};
inline constexpr Control kind{"rule.kind", "Kind"};
inline constexpr Control match{"rule.match", "Text to match"};
inline constexpr Control fillIn{"rule.fillIn", "Fill in from a running app"};
inline constexpr Control profile{"rule.profile", "Profile"};
inline constexpr Control remove{"rule.remove", "Remove rule"};

inline constexpr std::array all{window,        defaultBrowserText,
                                makeDefault,   helperText,
                                installHelper, showFolders,
                                rules,         noRules,
                                addRule,       defaultProfile,
                                testURL,       testApp,
                                testResult,    menuBarIcon,
                                editRules,     showLog,
                                version,       problem,
                                rule,          handle,
                                kind,          match,
                                fillIn,        profile,
                                remove};

// What is read out for a control of the rule at this place, so that rules can be told apart by ear.
inline std::string nameInRow(const Control& control, std::size_t index) {
    const std::string number = std::to_string(index + 1);
    if (control.identifier == rule.identifier) return std::string(rule.name) + " " + number;
    return std::string(control.name) + ", rule " + number;
}

}  // namespace SettingsControls
}  // namespace ferrivane
