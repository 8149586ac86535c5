// The module's entry.
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/desktop/Application.h"
#include "Ferrivane/linux/desktop/Documents.h"
#include "Ferrivane/linux/desktop/KeyFile.h"
#include "Ferrivane/linux/desktop/MainContext.h"
#include "Ferrivane/linux/desktop/Registry.h"
#include "Ferrivane/linux/desktop/SessionBus.h"
#include "Ferrivane/linux/desktop/StatusNotifier.h"
#include "Ferrivane/linux/desktop/Windows.h"

namespace ferrivane {
namespace {

class Services : public DesktopServices {
  public:
    void attach(Loop loop) override { MainContext::attach(std::move(loop)); }
    void iterate() override { MainContext::iterate(); }
    std::optional<std::filesystem::path> handler(std::string_view scheme) override {
        return Registry::handler(scheme);
    }
    std::expected<void, std::string> setHandler(const std::string& id,
                                                std::string_view scheme) override {
        return Registry::setHandler(id, scheme);
    }
    std::optional<std::filesystem::path> overridingList(std::string_view scheme) override {
        return Registry::overridingList(scheme);
    }
    std::optional<pid_t> busNameOwner(std::string_view name) override {
        return SessionBus::nameOwner(name);
    }
    NameClaim serve(const std::string& applicationId, Calls calls) override {
        return Application::serve(applicationId, std::move(calls));
    }
    void stopServing() override { Application::stopServing(); }
    bool activate(const std::string& applicationId,
                  const std::optional<std::string>& activationToken) override {
        return Application::activate(applicationId, activationToken);
    }
    void showStatusItem(const StatusItem& item, std::function<void(Command)> perform) override {
        StatusNotifier::show(item, std::move(perform));
    }
    void removeStatusItem() override { StatusNotifier::remove(); }
    std::optional<std::string> takeStatusItemToken() override {
        return StatusNotifier::takeActivationToken();
    }
    std::expected<void, std::string> open(const std::filesystem::path& file) override {
        return Documents::open(file);
    }
    void select(const std::filesystem::path& file) override { Documents::select(file); }
    std::optional<std::string> preference(const std::string& file,
                                          const std::string& key) override {
        return KeyFile::value(file, key);
    }
    std::string withPreference(const std::string& file, const std::string& key,
                               const std::string& value) override {
        return KeyFile::withValue(file, key, value);
    }
    void moveToOwnScope(pid_t process) override { SessionBus::moveToOwnScope(process); }
    bool hasDisplay() override { return Windows::canConnect(); }
    std::optional<Window> activeWindow() override { return Windows::active(); }
    std::vector<pid_t> windowProcesses() override { return Windows::processes(); }
    bool activateTopmostWindow(pid_t process) override { return Windows::activateTopmost(process); }
};

}  // namespace
}  // namespace ferrivane

extern "C" __attribute__((visibility("default"))) ferrivane::DesktopServices*
ferrivane_desktop_services() {
    static ferrivane::Services services;
    return &services;
}
