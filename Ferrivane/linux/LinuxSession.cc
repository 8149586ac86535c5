#include "Ferrivane/linux/LinuxSession.h"

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/linux/DesktopServices.h"

namespace ferrivane {
namespace {

const std::string kApplicationId(AppInfo::bundleIdentifier);

}  // namespace

Session::Place LinuxSession::join(ApplicationEvents& events) {
    DesktopServices* const services = desktopServices();
    if (services == nullptr) return Place::alone;
    using Sender = DesktopServices::Calls::Sender;
    const auto claim = services->serve(
        kApplicationId,
        {.open =
             [this, &events](std::vector<std::string> urls, const Sender& sender) {
                 loop_.noteWork();
                 return events.handleGetURL(
                     {std::move(urls), sender.process, sender.startupId, sender.activationToken});
             },
         .activate = [&events](const Sender& sender) { events.reopen(sender.activationToken); },
         .activateAction =
             [&events](const std::string& action, const Sender& sender) {
                 return events.performAction(action, sender.activationToken);
             },
         .sessionEnded = [&events] { events.sessionEnded(); },
         .terminate = [&events] { events.terminate(); }});
    if (claim == DesktopServices::NameClaim::taken) return Place::elsewhere;
    attachTo(*services, loop_);
    return claim == DesktopServices::NameClaim::owned ? Place::resident : Place::alone;
}

void LinuxSession::leave() {
    if (DesktopServices* const services = desktopServices()) services->stopServing();
}

bool LinuxSession::reopenResident(const std::optional<std::string>& activationToken) {
    DesktopServices* const services = desktopServices();
    return services != nullptr && services->activate(kApplicationId, activationToken);
}

}  // namespace ferrivane
