// The module's entry.
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/desktop/Registry.h"
#include "Ferrivane/linux/desktop/SessionBus.h"
#include "Ferrivane/linux/desktop/Windows.h"

namespace ferrivane {
namespace {

class Services : public DesktopServices {
  public:
    std::optional<std::filesystem::path> handler(std::string_view scheme) override {
        return Registry::handler(scheme);
    }
    std::optional<pid_t> busNameOwner(std::string_view name) override {
        return SessionBus::nameOwner(name);
    }
    void moveToOwnScope(pid_t process) override { SessionBus::moveToOwnScope(process); }
    std::optional<Window> activeWindow() override { return Windows::active(); }
    bool activateTopmostWindow(pid_t process) override { return Windows::activateTopmost(process); }
};

}  // namespace
}  // namespace ferrivane

extern "C" __attribute__((visibility("default"))) ferrivane::DesktopServices*
ferrivane_desktop_services() {
    static ferrivane::Services services;
    return &services;
}
