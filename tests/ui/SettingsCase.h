// What the tests of the settings window have in common: the window over a fake desktop and real
// files, driven by synthetic input.
#pragma once

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <memory>
#include <optional>

#include <gmock/gmock.h>
#include <stdlib.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/MainMenu.h"
#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsView.h"
#include "Ferrivane/linux/ui/RuleRowWidget.h"
#include "Ferrivane/linux/ui/RulesList.h"
#include "Ferrivane/linux/ui/SettingsMainWindow.h"
#include "tests/app/HelperTest.h"

namespace ferrivane::test {

inline constexpr int kLong = 60000;  // in milliseconds, for failures only

// One for the process, never deleted.
inline QApplication& application() {
    static const bool prepared = [] {
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);     // NOLINT(concurrency-mt-unsafe)
        ::setenv("QT_QPA_PLATFORMTHEME", "generic", 1);  // NOLINT(concurrency-mt-unsafe)
        return true;
    }();
    static int count = prepared ? 1 : 0;
    static std::string name = "ui_tests";
    static std::array<char*, 2> arguments{name.data(), nullptr};
    static auto* const made = new QApplication(count, arguments.data());
    return *made;
}

class SettingsCase : public HelperTest {
  protected:
    static constexpr const char* kOwn = "/apps/com.hollowmere.ferrivane.desktop";

    explicit SettingsCase(bool isSandboxed = false) : store(platform(isSandboxed), log, rulesFile) {
        application();
        fake.applications.bundle = {std::string(AppInfo::bundleIdentifier), "1.2", kOwn};
        fake.applications.identifiers[kOwn] = AppInfo::bundleIdentifier;
        writeCatalogue({{"Default", "Home", {}, {}}, {"Profile 1", "Work", {}, {}}});
        writeRules(R"({"rules": [{"kind": "host", "match": "a.example", "profile": "Work"},
                                 {"kind": "url", "match": "b", "profile": "Home"},
                                 {"kind": "app", "match": "Mail", "profile": "Gone"}]})");
        store.reload();
        view.emplace(fake.platform(), store, menuBar);
    }
    ~SettingsCase() override {
        window.reset();
        settle();
    }

    Platform platform(bool isSandboxed) {
        fake.isSandboxed = isSandboxed;
        return fake.platform();
    }

    // The window, shown and active.
    void open(const std::string& frame = {}) {
        store.reload();
        window = std::make_unique<SettingsMainWindow>(
            *view, SettingsWindowSetup{
                       .menus = MainMenu::menus(),
                       .perform = [this](Command command) { performed.push_back(command); },
                       .frame = frame,
                       .frameChanged = [this](const std::string& now) { frames.push_back(now); }});
        window->present();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        settle();
    }
    void openWithRules(std::size_t count) {
        Config config;
        for (std::size_t i = 0; i < count; ++i) {
            config.rules.emplace_back(Rule::Kind::host, "host" + std::to_string(i), "Default");
        }
        ASSERT_TRUE(config.save(rulesFile));
        open();
    }

    // Until what was set off has been drawn.
    static void settle() {
        for (int i = 0; i < 3; ++i) QTest::qWait(1);
    }

    template<typename Widget>
    Widget* find(const Control& control) const {
        return window->findChild<Widget*>(qt(control.identifier));
    }
    RulesList& list() const {
        return *static_cast<RulesList*>(find<QWidget>(SettingsControls::rules));
    }
    std::vector<RuleRowWidget*> rows() const {
        std::vector<RuleRowWidget*> shown;
        for (auto* row : window->findChildren<QWidget*>(qt(SettingsControls::rule.identifier))) {
            if (row->isVisible()) shown.push_back(static_cast<RuleRowWidget*>(row));
        }
        return shown;
    }
    RuleRowWidget* row(std::size_t index) const {
        for (RuleRowWidget* candidate : rows()) {
            if (candidate->index() == index) return candidate;
        }
        return nullptr;
    }
    template<typename Widget>
    Widget* inRow(std::size_t index, const Control& control) const {
        return row(index)->findChild<Widget*>(qt(control.identifier));
    }
    QLineEdit* match(std::size_t index) const {
        return inRow<QLineEdit>(index, SettingsControls::match);
    }

    Config onDisk() const { return *Config::load(rulesFile); }
    std::vector<std::string> matchesOnDisk() const {
        std::vector<std::string> texts;
        for (const Rule& rule : onDisk().rules) texts.push_back(rule.match);
        return texts;
    }
    Uuid id(std::size_t index) const { return store.config().rules.at(index).id; }

    MenuBar menuBar{fake.userInterface, log, [] {}};
    RulesStore store;
    std::optional<SettingsView> view;
    std::vector<Command> performed;
    std::vector<std::string> frames;
    std::unique_ptr<SettingsMainWindow> window;
};

// What a popup shows; it is open for the time of the call only.
template<typename Look>
void whilePopupIsOpen(const std::function<void()>& open, Look look) {
    bool seen = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        QWidget* const popup = QApplication::activePopupWidget();
        if (popup == nullptr) return;
        seen = true;
        timer.stop();
        look(popup);
        if (QApplication::activePopupWidget() == popup) popup->close();
    });
    timer.start(5);
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return seen; }, kLong));
}

}  // namespace ferrivane::test
