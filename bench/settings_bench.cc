// The settings window inside one process, drawn into memory: with a thousand rules against ten.
#include <QAbstractScrollArea>
#include <QApplication>
#include <QImage>
#include <QPushButton>
#include <QScrollBar>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Ferrivane/MainMenu.h"
#include "Ferrivane/linux/ui/Controls.h"
#include "Ferrivane/linux/ui/SettingsMainWindow.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/TempDir.h"

namespace {

using namespace ferrivane;

// Milliseconds.
double median(int runs, const std::function<void()>& work) {
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> taken =
            std::chrono::steady_clock::now() - start;
        times.push_back(taken.count());
    }
    std::ranges::sort(times);
    return times[times.size() / 2];
}

struct Figures {
    double opening = 0;
    double scrolling = 0;
    double page = 0;
    double keystroke = 0;
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
    figures.opening = median(7, [&] {
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
    figures.scrolling = median(200, [&] { scroll(bar->singleStep()); });
    figures.page = median(200, [&] { scroll(bar->pageStep()); });
    const Uuid rule = store.config().rules[0].id;
    std::string text;
    figures.keystroke = median(30, [&] {
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
    (void)measure(10);  // fonts and plugins are loaded
    const Figures few = measure(10);
    const Figures many = measure(1000);
    const std::array<std::tuple<const char*, double, double>, 4> lines{{
        {"rules read, window made and drawn", few.opening, many.opening},
        {"scrolled by a step and drawn", few.scrolling, many.scrolling},
        {"scrolled by a page and drawn", few.page, many.page},
        {"a keystroke, saved and drawn", few.keystroke, many.keystroke},
    }};
    for (const auto& [what, ten, thousand] : lines) {
        std::printf("  %-36s 10 rules %7.2f ms, 1,000 rules %7.2f ms: %5.2f times\n", what, ten,
                    thousand, thousand / ten);
    }
    return 0;
}
