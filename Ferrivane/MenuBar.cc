#include "Ferrivane/MenuBar.h"

#include "core/Config.h"

namespace ferrivane {

StatusItem MenuBar::item() {
    return {.symbol = "arrow.triangle.branch",
            .accessibilityDescription = "Ferrivane",
            .toolTip = "Ferrivane",
            .items = {{Command::settings, "Settings…", ","},
                      {},
                      {Command::editRules, "Edit rules.json"},
                      {Command::showLog, "Show Log"},
                      {},
                      {Command::quit, "Quit Ferrivane", "q"}}};
}

void MenuBar::setVisible(bool visible) {
    if (visible == isVisible_) return;
    isVisible_ = visible;
    if (visible) {
        interface_.showStatusItem(item(), [this](Command command) { perform(command); });
    } else {
        interface_.removeStatusItem();
    }
}

void MenuBar::showSettings() const {
    if (onSettings) onSettings();
}

void MenuBar::editRules() const {
    open(Config::fileURL());
}

void MenuBar::showLog() const {
    log_.flush();  // its first line may be on its way
    open(log_.fileURL);
}

void MenuBar::perform(Command command) const {
    switch (command) {
        case Command::settings:
            return showSettings();
        case Command::editRules:
            return editRules();
        case Command::showLog:
            return showLog();
        case Command::quit:
            return quit_();
        default:
            return;
    }
}

void MenuBar::open(const std::filesystem::path& file) const {
    const auto opened = interface_.openDocument(file);
    if (!opened) log_.error("cannot open " + file.string() + ": " + opened.error().text);
}

}  // namespace ferrivane
