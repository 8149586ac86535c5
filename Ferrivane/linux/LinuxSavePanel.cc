#include "Ferrivane/linux/LinuxSavePanel.h"

#include <chrono>
#include <iostream>
#include <utility>

#include <unistd.h>

#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Toolkit.h"

namespace ferrivane {

static constexpr std::chrono::milliseconds kMappingTime{100};

void LinuxSavePanel::show(const Question& question, std::function<void(Answer)> completion) {
    const auto shown = toolkit(loop_);
    if (!shown) {
        std::cerr << "Ferrivane: cannot show a save panel: " << shown.error() << '\n';
        return completion({});
    }
    loop_.retain();
    (*shown)->showSavePanel(question,
                            [this, completion = std::move(completion)](const Answer& answer) {
                                loop_.release();
                                completion(answer);
                            });
    // A window manager may leave the window of a program in the background where it is.
    loop_.after(kMappingTime, [] {
        if (DesktopServices* services = desktopServices()) {
            services->activateTopmostWindow(::getpid());
        }
    });
}

}  // namespace ferrivane
