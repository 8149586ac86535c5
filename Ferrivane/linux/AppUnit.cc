#include "Ferrivane/linux/AppUnit.h"

#include <algorithm>
#include <charconv>

namespace ferrivane::AppUnit {
namespace {

// "\x2d" and its like (systemd.unit(5)).
std::string unescaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        unsigned value = 0;
        if (text.size() >= 4 && text.starts_with("\\x") &&
            std::from_chars(text.data() + 2, text.data() + 4, value, 16).ptr == text.data() + 4) {
            result.push_back(static_cast<char>(value));
            text.remove_prefix(4);
        } else {
            result.push_back(text.front());
            text.remove_prefix(1);
        }
    }
    return result;
}

bool removeSuffix(std::string_view& text, std::string_view suffix) {
    if (!text.ends_with(suffix)) return false;
    text.remove_suffix(suffix.size());
    return true;
}

// "snap.<package>.<application>-<uuid>.scope", older ones with a dot before the uuid, and
// "snap.<package>.<application>.service".
void appendSnap(std::string_view unit, std::vector<std::string>& ids) {
    unit.remove_prefix(std::string_view("snap.").size());
    const std::size_t dot = unit.find('.');
    if (dot == std::string_view::npos) return;
    std::string_view application = unit.substr(dot + 1);
    constexpr std::size_t kUuidLength = 36;
    if (application.size() > kUuidLength + 1 &&
        std::ranges::count(application.substr(application.size() - kUuidLength), '-') == 4) {
        application.remove_suffix(kUuidLength + 1);
    }
    ids.push_back(std::string(unit.substr(0, dot)) + "_" + std::string(application));
}

void appendUnit(std::string_view unit, std::vector<std::string>& ids) {
    const bool isScope = removeSuffix(unit, ".scope");
    const bool isService = !isScope && removeSuffix(unit, ".service");
    if (!isScope && !isService && !removeSuffix(unit, ".slice")) return;
    if (unit.starts_with("snap.")) return appendSnap(unit, ids);
    constexpr std::string_view kPrefix = "app-";
    if (!unit.starts_with(kPrefix)) return;
    unit.remove_prefix(kPrefix.size());
    if (isScope) unit = unit.substr(0, unit.rfind('-'));  // the random part
    if (isService) unit = unit.substr(0, unit.find('@'));
    if (unit.empty()) return;
    const std::size_t dash = unit.find('-');
    if (dash != std::string_view::npos && dash + 1 < unit.size()) {
        ids.push_back(unescaped(unit.substr(dash + 1)));  // behind the launcher
    }
    ids.push_back(unescaped(unit));
}

}  // namespace

std::vector<std::string> candidateIds(std::string_view controlGroup) {
    std::vector<std::string> ids;
    while (!controlGroup.empty()) {
        const std::size_t slash = controlGroup.rfind('/');
        appendUnit(controlGroup.substr(slash + 1), ids);
        controlGroup = slash == std::string_view::npos ? "" : controlGroup.substr(0, slash);
    }
    return ids;
}

}  // namespace ferrivane::AppUnit
