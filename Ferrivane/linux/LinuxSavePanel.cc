#include "Ferrivane/linux/LinuxSavePanel.h"

#include <iostream>
#include <utility>

#include "Ferrivane/linux/Toolkit.h"

namespace ferrivane {

void LinuxSavePanel::show(const Question& question, std::function<void(Answer)> completion) {
    const auto shown = toolkit(loop_);
    if (!shown) {
        std::cerr << "Ferrivane: cannot show a save panel: " << shown.error() << std::endl;
        return completion({});
    }
    loop_.retain();
    (*shown)->showSavePanel(question,
                            [this, completion = std::move(completion)](const Answer& answer) {
                                loop_.release();
                                completion(answer);
                            });
}

}  // namespace ferrivane
