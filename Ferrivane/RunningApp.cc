#include "Ferrivane/RunningApp.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "Ferrivane/AppInfo.h"

namespace ferrivane {

std::vector<RunningApp> RunningApp::current(const Applications& applications) {
    auto running = applications.runningApplications();
    std::erase_if(running, [](const Applications::Running& app) {
        return !app.bundleId || *app.bundleId == AppInfo::bundleIdentifier;
    });
    std::map<std::string, int> copies;
    for (const auto& app : running) ++copies[*app.bundleId];

    std::vector<RunningApp> result;
    for (const auto& app : running) {
        if (!app.path) continue;
        RunningApp item{.id = app.process,
                        .name = app.name.value_or(*app.bundleId),
                        .bundleId = *app.bundleId,
                        .path = *app.path,
                        .matchValue = *app.bundleId};
        if (copies[*app.bundleId] > 1) {
            item.name += " (" + std::filesystem::path(*app.path).filename().string() + ")";
            item.matchValue = *app.path;
        }
        result.push_back(std::move(item));
    }
    std::ranges::stable_sort(result, [&](const RunningApp& a, const RunningApp& b) {
        return applications.comesBefore(a.name, b.name);
    });
    return result;
}

}  // namespace ferrivane
