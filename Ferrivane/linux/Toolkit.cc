#include "Ferrivane/linux/Toolkit.h"

#include <chrono>

#include <unistd.h>

#include "Ferrivane/SettingsView.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/DisplaySockets.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Modules.h"

namespace ferrivane {
namespace {

// Whoever loads the module has what it calls (ui/exports.txt): the settings, with all they need.
[[gnu::used]] void (SettingsView::* const kCalledByTheModule)() = &SettingsView::refresh;

// The toolkit ends the process when it finds no display, so it is not asked before there is one.
// Its names of what can be reached, the preferred one first, separated by ";".
std::string platforms(DesktopServices& services) {
    if (const std::string chosen = environment("QT_QPA_PLATFORM"); chosen == "offscreen") {
        return chosen;
    }
    const bool hasX = !environment("DISPLAY").empty() && services.hasDisplay();
    const bool hasWayland{connectToWayland()};
    if (!hasX || !hasWayland) return hasX ? "xcb" : hasWayland ? "wayland" : "";
    // GNOME draws no title bars for others.
    const bool isGnome = environment("XDG_CURRENT_DESKTOP").find("GNOME") != std::string::npos;
    return isGnome ? "xcb;wayland" : "wayland;xcb";
}

}  // namespace

std::expected<Toolkit*, std::string> toolkit(EventLoop& loop) {
    static Toolkit* loaded = nullptr;
    if (loaded != nullptr) return loaded;
    DesktopServices* const services = desktopServices();
    if (services == nullptr) return std::unexpected("the desktop's libraries are missing");
    const std::string reachable = platforms(*services);
    if (reachable.empty()) return std::unexpected("no display");
    using Create = Toolkit* (*)(const char* platforms);
    const auto create =
        reinterpret_cast<Create>(Modules::load(Modules::windows(), "ferrivane_toolkit"));
    if (create == nullptr) return std::unexpected(Modules::windows() + " is missing");
    attachTo(*services, loop);
    loaded = create(reachable.c_str());
    if (loaded == nullptr) return std::unexpected("no plugin of the toolkit for this display");
    return loaded;
}

void bringToFrontSoon(EventLoop& loop) {
    constexpr std::chrono::milliseconds kMappingTime{100};
    loop.after(kMappingTime, [] {
        if (DesktopServices* services = desktopServices()) {
            services->activateTopmostWindow(::getpid());
        }
    });
}

}  // namespace ferrivane
