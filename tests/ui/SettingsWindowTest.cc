// What the settings window shows, and what a person's input does to the rules.
#include <QCheckBox>
#include <QGroupBox>
#include <QLayout>
#include <QMenu>
#include <QMenuBar>
#include <array>
#include <map>

#include <sys/inotify.h>
#include <unistd.h>

#include "Ferrivane/SettingsWindow.h"
#include "tests/ui/SettingsCase.h"

namespace ferrivane {
namespace {

using test::whilePopupIsOpen;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
namespace C = SettingsControls;

class SettingsWindowTest : public test::SettingsCase {
  protected:
    using SettingsCase::SettingsCase;

    QLabel* label(const Control& control) const { return find<QLabel>(control); }
    QPushButton* button(const Control& control) const { return find<QPushButton>(control); }
    Combo* combo(const Control& control) const {
        return static_cast<Combo*>(find<QComboBox>(control));
    }
    static void choose(QComboBox* box, int index) {
        box->setCurrentIndex(index);
        emit box->activated(index);
    }
    static std::vector<std::string> items(const QComboBox& box) {
        std::vector<std::string> texts;
        texts.reserve(static_cast<std::size_t>(box.count()));
        for (int i = 0; i < box.count(); ++i) texts.push_back(box.itemText(i).toStdString());
        return texts;
    }
    std::vector<std::string> labels() const {
        std::vector<std::string> texts;
        for (const QLabel* shown : window->findChildren<QLabel*>()) {
            if (shown->isVisible()) texts.push_back(shown->text().toStdString());
        }
        return texts;
    }
};

TEST_F(SettingsWindowTest, ItsTexts) {
    open();
    EXPECT_EQ(window->windowTitle(), "Ferrivane");
    std::vector<std::pair<int, std::string>> groups;
    for (const QGroupBox* group : window->findChildren<QGroupBox*>()) {
        groups.emplace_back(group->y(), group->title().toStdString());
    }
    std::ranges::sort(groups);
    ASSERT_EQ(groups.size(), 3U);
    EXPECT_EQ(groups[0].second, "Rules — checked top to bottom, the first match wins");
    EXPECT_EQ(groups[1].second, "Try a link");
    EXPECT_EQ(groups[2].second, "Options");
    EXPECT_THAT(labels(),
                ::testing::IsSupersetOf(
                    {"Ferrivane is not the default browser: links open straight in another app.",
                     "Drag the ≡ handle to reorder. Comments live in rules.json.",
                     "&Default profile", "Used when none of the rules above matches.",
                     "Type a link to see where it would open.", "Ferrivane 1.2"}));
    EXPECT_EQ(button(C::makeDefault)->text(), "&Make Ferrivane the default");
    EXPECT_EQ(button(C::addRule)->text(), "&Add rule");
    EXPECT_EQ(button(C::editRules)->text(), "Edit &rules.json…");
    EXPECT_EQ(button(C::showLog)->text(), "Show &Log");
    EXPECT_EQ(find<QCheckBox>(C::menuBarIcon)->text(), "&Show icon in the menu bar");
    EXPECT_EQ(find<QLineEdit>(C::testURL)->placeholderText(), "https://…");
    EXPECT_THAT(items(*combo(C::testApp)), ElementsAre("unknown app"));
    EXPECT_EQ(combo(C::defaultProfile)->toolTip(),
              "Where a link opens when none of the rules above matches");
}

class SandboxedSettingsWindow : public SettingsWindowTest {
  protected:
    SandboxedSettingsWindow() : SettingsWindowTest(true) {}
};

TEST_F(SandboxedSettingsWindow, EveryControlHasItsIdentifier) {
    open();
    for (const Control& control : C::all) {
        const bool isWindow = control.identifier == C::window.identifier;
        EXPECT_TRUE(isWindow ? window->objectName() == qt(control.identifier)
                             : find<QWidget>(control) != nullptr)
            << control.identifier;
    }
}

TEST_F(SandboxedSettingsWindow, NoTwoAccessKeysAreTheSame) {
    open();
    std::map<QChar, std::string> keys;
    const auto add = [&](const QString& text) {
        const auto place = text.indexOf('&');
        if (place < 0) return;
        const auto [other, isNew] = keys.emplace(text[place + 1].toLower(), text.toStdString());
        EXPECT_TRUE(isNew) << other->second << " and " << text.toStdString();
    };
    for (const auto* button : window->findChildren<QAbstractButton*>()) add(button->text());
    for (const auto* shown : window->findChildren<QLabel*>()) add(shown->text());
    for (const auto* menu : window->menuBar()->actions()) add(menu->text());
    EXPECT_EQ(keys.size(), 11U);
}

TEST_F(SettingsWindowTest, Measures) {
    open();
    EXPECT_EQ(window->size(), QSize(820, 620));
    EXPECT_EQ(window->minimumSize(), QSize(700, 520));
    EXPECT_EQ(combo(C::defaultProfile)->width(), 170);
    EXPECT_EQ(combo(C::testApp)->width(), 190);
    EXPECT_EQ(inRow<QWidget>(0, C::kind)->width(), 118);
    EXPECT_EQ(inRow<QWidget>(0, C::profile)->width(), 150);
    EXPECT_EQ(inRow<QWidget>(0, C::handle)->size(), QSize(16, 24));
    EXPECT_EQ(row(0)->layout()->contentsMargins(), QMargins(8, 5, 8, 5));
    window->resize(700, 520);
    settle();
    EXPECT_GE(list().height(), 160);
}

TEST_F(SettingsWindowTest, ARowShowsItsRule) {
    open();
    ASSERT_EQ(rows().size(), 3U);
    auto* kind = inRow<QComboBox>(0, C::kind);
    EXPECT_THAT(items(*kind), ElementsAre("URL contains", "Domain", "Sent by"));
    EXPECT_EQ(kind->currentText(), "Domain");
    EXPECT_EQ(match(0)->text(), "a.example");
    EXPECT_EQ(inRow<QComboBox>(0, C::profile)->currentText(), "Work");
    EXPECT_THAT(items(*inRow<QComboBox>(2, C::profile)), ElementsAre("Home", "Work", "⚠︎ Gone"));
    EXPECT_EQ(inRow<QComboBox>(2, C::profile)->currentText(), "⚠︎ Gone");
    EXPECT_EQ(inRow<QWidget>(0, C::handle)->toolTip(), "Drag to reorder");
    EXPECT_EQ(inRow<QWidget>(0, C::remove)->toolTip(), "Remove rule");
    EXPECT_EQ(inRow<QWidget>(2, C::fillIn)->toolTip(), "Fill in from a running app");
}

TEST_F(SettingsWindowTest, WithoutRulesTheDefaultProfileStillWorks) {
    writeRules("{}");
    open();
    EXPECT_TRUE(label(C::noRules)->isVisible());
    EXPECT_EQ(label(C::noRules)->text(), "No rules yet: every link opens in the default profile.");
    EXPECT_FALSE(list().isVisible());
    choose(combo(C::defaultProfile), 1);
    EXPECT_EQ(onDisk().defaultProfile, "Profile 1");
    QTest::mouseClick(button(C::addRule), Qt::LeftButton);
    settle();
    EXPECT_FALSE(label(C::noRules)->isVisible());
    EXPECT_TRUE(list().isVisible());
    EXPECT_TRUE(match(0)->hasFocus());
}

TEST_F(SettingsWindowTest, EachKeystrokeIsSaved) {
    open();
    match(1)->setFocus();
    QTest::keyClick(match(1), Qt::Key_End);
    const int watch = ::inotify_init1(IN_NONBLOCK);
    ::inotify_add_watch(watch, dir.path().c_str(), IN_MOVED_TO);
    for (const char* text : {"bx", "bxy", "bxyz"}) {
        QTest::keyClick(match(1), text[std::string(text).size() - 1]);
        EXPECT_EQ(onDisk().rules[1].match, text);
        std::array<char, 4096> events{};
        const ssize_t size = ::read(watch, events.data(), events.size());
        const auto* event = reinterpret_cast<const inotify_event*>(events.data());
        EXPECT_EQ(size, static_cast<ssize_t>(sizeof *event + event->len)) << "written once";
    }
    ::close(watch);
    settle();
    EXPECT_EQ(match(1)->text(), "bxyz");
    EXPECT_EQ(match(1)->cursorPosition(), 4);
}

TEST_F(SettingsWindowTest, AnotherKindKeepsTheTextAndChangesTheRest) {
    open();
    EXPECT_TRUE(inRow<QWidget>(2, C::fillIn)->isVisible());
    EXPECT_EQ(match(2)->placeholderText(), "desktop id, app name or program path");
    choose(inRow<QComboBox>(2, C::kind), 1);
    settle();
    EXPECT_FALSE(inRow<QWidget>(2, C::fillIn)->isVisible());
    EXPECT_EQ(match(2)->placeholderText(), "example.com — also matches its subdomains");
    EXPECT_EQ(match(2)->text(), "Mail");
    EXPECT_EQ(onDisk().rules[2].kind, Rule::Kind::host);
}

TEST_F(SettingsWindowTest, FillsInFromOneOfTwoCopies) {
    fake.applications.applicationsRunning = {{7, "Chat", "org.example.Chat", "/one/chat"},
                                             {8, "Chat", "org.example.Chat", "/two/chat2"},
                                             {9, "Mail", "org.example.Mail", "/mail"}};
    open();
    auto* button = inRow<QToolButton>(2, C::fillIn);
    whilePopupIsOpen([&] { button->showMenu(); },
                     [&](QWidget* popup) {
                         const auto actions = popup->actions();
                         ASSERT_EQ(actions.size(), 3);
                         EXPECT_EQ(actions[0]->text(), "Chat (chat)");
                         EXPECT_EQ(actions[1]->text(), "Chat (chat2)");
                         EXPECT_EQ(actions[2]->text(), "Mail");
                         actions[1]->trigger();
                     });
    settle();
    EXPECT_EQ(match(2)->text(), "/two/chat2");
    EXPECT_EQ(onDisk().rules[2].match, "/two/chat2");
}

TEST_F(SettingsWindowTest, NothingToFillInFrom) {
    open();
    EXPECT_FALSE(inRow<QWidget>(2, C::fillIn)->isEnabled());
}

TEST_F(SettingsWindowTest, ChoosingAProfileStoresItsFolder) {
    open();
    auto* profile = inRow<QComboBox>(2, C::profile);
    choose(profile, 1);
    settle();
    EXPECT_EQ(onDisk().rules[2].profile, "Profile 1");
    EXPECT_THAT(items(*profile), ElementsAre("Home", "Work")) << "the warning is gone";
}

TEST_F(SettingsWindowTest, AProfileThatIsNotChosen) {
    writeRules(R"({"rules": [{"kind": "url", "match": "x", "profile": ""}]})");
    open();
    EXPECT_EQ(inRow<QComboBox>(0, C::profile)->currentText(), "⚠︎ choose…");
}

TEST_F(SettingsWindowTest, ANewRulesFieldTakesTheFocus) {
    open();
    QTest::mouseClick(button(C::addRule), Qt::LeftButton);
    settle();
    ASSERT_EQ(rows().size(), 4U);
    EXPECT_TRUE(match(3)->hasFocus());
    QTest::keyClicks(match(3), "new");
    EXPECT_EQ(onDisk().rules[3].match, "new");
    EXPECT_EQ(onDisk().rules[3].profile, "Default");
}

TEST_F(SettingsWindowTest, RemovingARule) {
    open();
    QTest::mouseClick(inRow<QToolButton>(1, C::remove), Qt::LeftButton);
    settle();
    EXPECT_THAT(matchesOnDisk(), ElementsAre("a.example", "Mail"));
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_EQ(match(1)->text(), "Mail");
}

TEST_F(SettingsWindowTest, TheTesterAnswersWhileOneTypes) {
    fake.applications.applicationsRunning = {{7, "Mail", "org.example.Mail", "/usr/bin/mail"}};
    open();
    auto* url = find<QLineEdit>(C::testURL);
    const auto result = [this] {
        settle();
        return label(C::testResult)->text().toStdString();
    };
    QTest::keyClicks(url, "   ");
    EXPECT_EQ(result(), "Type a link to see where it would open.");
    QTest::keyClicks(url, "a.example/");
    EXPECT_EQ(result(), "→ Home [Default]   (no rule matched, default)");
    QTest::keyClick(url, Qt::Key_Home);
    QTest::keyClicks(url, "https://");
    EXPECT_EQ(result(), "→ Home [Default]   (no rule matched, default)");
    url->selectAll();
    QTest::keyClicks(url, "https://a.example/");
    EXPECT_EQ(result(), "→ Work [Profile 1]   (rule #1)");
    url->selectAll();
    QTest::keyClicks(url, "x:");
    EXPECT_THAT(items(*combo(C::testApp)), ElementsAre("unknown app", "Mail"));
    choose(combo(C::testApp), 1);
    EXPECT_EQ(
        result(),
        "→ \"Gone\" is not a Chrome profile; Chrome would pick the window itself   (rule #3)");
    choose(combo(C::testApp), 0);
    EXPECT_EQ(result(), "→ Home [Default]   (no rule matched, default)");
    QTest::keyClicks(match(0), "2");
    EXPECT_TRUE(label(C::testResult)->textInteractionFlags() & Qt::TextSelectableByMouse);
}

TEST_F(SettingsWindowTest, TheDefaultBrowser) {
    fake.applications.handlers["https"] = "/apps/other.desktop";
    fake.applications.handlers["http"] = "/apps/other.desktop";
    open();
    EXPECT_EQ(label(C::defaultBrowserText)->text(),
              "Ferrivane is not the default browser: links open straight in other.");
    QTest::mouseClick(button(C::makeDefault), Qt::LeftButton);
    fake.mainLoop.runUntilIdle();
    settle();
    EXPECT_EQ(label(C::defaultBrowserText)->text(),
              "Ferrivane is your default browser. Links from other apps go through your rules.");
    EXPECT_FALSE(button(C::makeDefault)->isVisible());
}

TEST_F(SettingsWindowTest, NoHelperScriptIsNeeded) {
    open();
    EXPECT_FALSE(label(C::helperText)->isVisible());
}

TEST_F(SandboxedSettingsWindow, TheHelperScript) {
    open();
    EXPECT_THAT(label(C::helperText)->text().toStdString(), HasSubstr("One more step: "));
    EXPECT_EQ(button(C::installHelper)->text(), "&Install Helper…");
    EXPECT_EQ(button(C::showFolders)->text(), "Sh&ow Folders…");
    EXPECT_EQ(button(C::showFolders)->toolTip(),
              "Copy the script by hand if the button above does not work");
    fake.calls.clear();
    QTest::mouseClick(button(C::showFolders), Qt::LeftButton);
    EXPECT_GE(fake.calls.count("scripts.select") + fake.calls.count("scripts.openFolder"), 1U);
    QTest::mouseClick(button(C::installHelper), Qt::LeftButton);
    EXPECT_TRUE(fake.savePanel.asked);
    installScript();
    store.reload();
    settle();
    EXPECT_FALSE(label(C::helperText)->isVisible()) << "ready";
}

TEST_F(SettingsWindowTest, TheProblemLine) {
    open();
    EXPECT_FALSE(label(C::problem)->isVisible());
    writeRules("{ broken");
    store.reload();
    settle();
    EXPECT_TRUE(label(C::problem)->isVisible());
    EXPECT_THAT(label(C::problem)->text().toStdString(), ::testing::StartsWith("rules.json: "));
    EXPECT_EQ(rows().size(), 3U) << "the rules before";
}

TEST_F(SettingsWindowTest, Options) {
    open();
    fake.calls.clear();
    QTest::mouseClick(button(C::editRules), Qt::LeftButton);
    QTest::mouseClick(button(C::showLog), Qt::LeftButton);
    EXPECT_EQ(fake.calls.count("userInterface.openDocument"), 2U);
    auto* icon = find<QCheckBox>(C::menuBarIcon);
    EXPECT_FALSE(icon->isChecked());
    icon->click();
    EXPECT_TRUE(fake.preferences.flags["showMenuBarIcon"]);
    EXPECT_TRUE(fake.userInterface.statusItem);
    settle();
    icon->click();
    EXPECT_FALSE(fake.preferences.flags["showMenuBarIcon"]);
    EXPECT_FALSE(fake.userInterface.statusItem);
}

TEST_F(SettingsWindowTest, AClickBesideAFieldEndsTheEditing) {
    open();
    match(0)->setFocus();
    EXPECT_EQ(view->focusedRule(), id(0));
    QTest::mouseClick(match(0), Qt::LeftButton);
    EXPECT_TRUE(match(0)->hasFocus()) << "in the field itself";
    QTest::mouseClick(window->centralWidget(), Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_FALSE(match(0)->hasFocus());
    EXPECT_EQ(view->focusedRule(), std::nullopt);
    match(0)->setFocus();
    QTest::mouseClick(label(C::version), Qt::LeftButton);
    EXPECT_FALSE(match(0)->hasFocus()) << "on a text";
    match(0)->setFocus();
    QTest::mouseClick(match(1), Qt::LeftButton);
    EXPECT_TRUE(match(1)->hasFocus());
    EXPECT_EQ(view->focusedRule(), id(1));
}

TEST_F(SettingsWindowTest, TheFrameIsRemembered) {
    open();
    EXPECT_THAT(frames, IsEmpty());
    window->resize(900, 700);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !frames.empty(); }, test::kLong));
    const std::string frame = frames.back();
    EXPECT_EQ(frame.find('\n'), std::string::npos);
    window.reset();
    open(frame);
    EXPECT_EQ(window->size(), QSize(900, 700));
    window.reset();
    open("nonsense");
    EXPECT_EQ(window->size(), QSize(820, 620));
}

TEST_F(SettingsWindowTest, ClosingSavesTheFrameAndHidesTheWindow) {
    open();
    window->resize(850, 650);
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(frames.empty());
    fake.applications.handlers["https"] = fake.applications.handlers["http"] = kOwn;
    window->present();
    EXPECT_EQ(window->size(), QSize(850, 650));
    EXPECT_FALSE(button(C::makeDefault)->isVisible()) << "asked again when it appears";
}

TEST_F(SettingsWindowTest, NamesOfApplicationsAreNoAccessKeys) {
    fake.applications.applicationsRunning = {{7, "Rock & Roll", "org.example.Rock", "/rock"}};
    open();
    auto* button = inRow<QToolButton>(2, C::fillIn);
    whilePopupIsOpen(
        [&] { button->showMenu(); },
        [](QWidget* popup) { EXPECT_EQ(popup->actions()[0]->text(), "Rock && Roll"); });
}

TEST_F(SettingsWindowTest, TheMenuBarIsNotBesideTheField) {
    open();
    match(0)->setFocus();
    QMenuBar* const bar = window->menuBar();
    whilePopupIsOpen(
        [&] {
            QTest::mouseClick(bar, Qt::LeftButton, {},
                              bar->actionGeometry(bar->actions()[1]).center());
        },
        [&](QWidget* popup) {
            EXPECT_TRUE(popup->actions().back()->isEnabled()) << "Select All";
            popup->actions().back()->trigger();
        });
    EXPECT_EQ(match(0)->selectedText(), "a.example");
}

TEST_F(SettingsWindowTest, ARuleAddedWhileAnotherWindowIsActiveKeepsNobodyWaiting) {
    open();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    view->addRule();
    settle();
    EXPECT_EQ(view->focusedRule(), std::nullopt);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_TRUE(match(3)->hasFocus());
    EXPECT_EQ(view->focusedRule(), id(3));
}

}  // namespace
}  // namespace ferrivane
