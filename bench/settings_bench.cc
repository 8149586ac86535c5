// The settings window inside one process, drawn into memory: with a thousand rules against ten.
#include <QAbstractScrollArea>
#include <QApplication>
#include <QImage>
#include <QPushButton>
#include <QScrollBar>
#include <functional>
#include <string>

#include "Ferrivane/MainMenu.h"
#include "Ferrivane/linux/ui/Controls.h"
#include "Ferrivane/linux/ui/SettingsMainWindow.h"
#include "bench/Table.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/TempDir.h"

namespace {

using namespace ferrivane;

bench::Values times(int runs, const std::function<void()>& work) {
    bench::Values values;
    for (int i = 0; i < bench::runs(runs); ++i) values.push_back(bench::milliseconds(work));
    return values;
}

struct Figures {
    bench::Values opening;
    bench::Values scrolling;
    bench::Values page;
    bench::Values keystroke;
};

Figures measure(std::size_t rules) {
    const test::TempDir folder;
    Config config;
    for (std::size_t i = 0; i < rules; ++i) {
        config.rules.emplace_back(Rule::Kind::host, "host" + std::to_string(i) + ".example",
                                  "Profile " + std::to_string(i % 5));
    }
    (void)config.save(folder / "rules.json");
    test::FakePlatform fake;
    Log log(folder / "log");
    MenuBar menuBar(fake.userInterface, log, [] {});
    RulesStore store(fake.platform(), log, folder / "rules.json");
    SettingsView view(fake.platform(), store, menuBar);

    Figures figures;
    figures.opening = times(15, [&] {
        store.reload();
        SettingsMainWindow window(
            view, {.menus = MainMenu::menus(), .perform = {}, .frame = {}, .frameChanged = {}});
        window.present();
        QApplication::processEvents();
        window.grab();
    });
    store.reload();
    SettingsMainWindow window(
        view, {.menus = MainMenu::menus(), .perform = {}, .frame = {}, .frameChanged = {}});
    window.present();
    QApplication::processEvents();
    auto* const list =
        window.findChild<QAbstractScrollArea*>(qt(SettingsControls::rules.identifier));
    QScrollBar* const bar = list->verticalScrollBar();
    QImage picture(list->size(), QImage::Format_ARGB32_Premultiplied);
    const auto scroll = [&](int by) {
        bar->setValue(bar->value() + by > bar->maximum() ? 0 : bar->value() + by);
        list->render(&picture);
    };
    figures.scrolling = times(200, [&] { scroll(bar->singleStep()); });
    figures.page = times(200, [&] { scroll(bar->pageStep()); });
    const Uuid rule = store.config().rules[0].id;
    std::string text;
    figures.keystroke = times(30, [&] {
        view.setMatch(rule, text += 'x');
        QApplication::processEvents();
    });
    return figures;
}

}  // namespace

int main(int count, char** values) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QApplication application(count, values);
    return bench::guarded([] {
        (void)measure(10);  // fonts and plugins are loaded
        const Figures few = measure(10);
        const Figures many = measure(1000);
        const auto row = [](const std::string& what, const bench::Values& ten,
                            const bench::Values& thousand) {
            bench::row("The settings, drawn into memory", "1,000 rules: " + what, "ms", thousand,
                       "10 rules", ten);
        };
        row("rules read, window made and drawn", few.opening, many.opening);
        row("scrolled by a step and drawn", few.scrolling, many.scrolling);
        row("scrolled by a page and drawn", few.page, many.page);
        row("a keystroke, saved and drawn", few.keystroke, many.keystroke);
        return 0;
    });
}
