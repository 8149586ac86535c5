#include "Ferrivane/ProfilePicker.h"

#include <algorithm>

#include "core/ChromeProfiles.h"

namespace ferrivane::ProfilePicker {

Choices choices(const std::string& selection, const std::vector<ChromeProfile>& profiles) {
    Choices result;
    for (const ChromeProfile& profile : profiles) {
        result.all.push_back({profile.name, profile.directory});
    }
    if (const auto resolved = ChromeProfiles::resolve(selection, profiles)) {
        const auto found =
            std::ranges::find(profiles, resolved->directory, &ChromeProfile::directory);
        result.current = static_cast<std::size_t>(found - profiles.begin());
    } else {
        result.current = result.all.size();
        result.all.push_back({"⚠︎ " + (selection.empty() ? "choose…" : selection), selection});
    }
    return result;
}

}  // namespace ferrivane::ProfilePicker
