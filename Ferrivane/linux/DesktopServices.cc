#include "Ferrivane/linux/DesktopServices.h"

#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/Modules.h"

namespace ferrivane {
namespace {

DesktopServices* load() {
    using Create = DesktopServices* (*)();
    const auto create =
        reinterpret_cast<Create>(Modules::load(Modules::desktop(), "ferrivane_desktop_services"));
    return create != nullptr ? create() : nullptr;
}

}  // namespace

DesktopServices* desktopServices() {
    static DesktopServices* const services = load();
    return services;
}

void attachTo(DesktopServices& services, EventLoop& loop) {
    if (loop.isTakenIn()) return;
    services.attach({loop.descriptor(), [&loop] { return loop.timeoutMilliseconds(); },
                     [&loop] { loop.dispatch(); }});
    loop.waitThrough([&services] { services.iterate(); });
}

}  // namespace ferrivane
