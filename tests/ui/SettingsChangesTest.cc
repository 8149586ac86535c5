// Rules that others write while the settings are open, and a disk that refuses.
#include <QMenu>

#include "tests/ui/SettingsCase.h"

namespace ferrivane {
namespace {

using test::whilePopupIsOpen;
using ::testing::ElementsAre;
namespace C = SettingsControls;

using SettingsChangesTest = test::SettingsCase;

TEST_F(SettingsChangesTest, WhatOthersWriteAppears) {
    open();
    const auto appears = [this](const char* text) {
        return QTest::qWaitFor([&] { return match(0) != nullptr && match(0)->text() == text; },
                               test::kLong);
    };
    const auto write = [this](const std::string& text) {
        writeRules(R"({"rules": [{"kind": "url", "match": ")" + text +
                   R"(", "profile": "Work"}]})");
    };
    write("written");
    EXPECT_TRUE(appears("written"));
    const auto aside = dir / "aside";
    test::writeText(aside, R"({"rules": [{"kind": "url", "match": "renamed", "profile": ""}]})");
    std::filesystem::rename(aside, rulesFile);
    EXPECT_TRUE(appears("renamed"));
    write("again");
    EXPECT_TRUE(appears("again")) << "the file that was renamed is watched too";

    match(0)->setFocus();
    write("later");
    QTest::qWait(200);
    EXPECT_EQ(match(0)->text(), "again") << "it is being edited";
    QTest::mouseClick(window->centralWidget(), Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_TRUE(appears("later"));
}

TEST_F(SettingsChangesTest, FromOneFieldToAnotherIsStillEditing) {
    open();
    match(0)->setFocus();
    writeRules(R"({"defaultProfile": "Theirs"})");
    view->rulesFileChanged();
    QTest::mouseClick(match(1), Qt::LeftButton);
    settle();
    EXPECT_TRUE(match(1)->hasFocus());
    EXPECT_EQ(view->focusedRule(), id(1));
    QTest::keyClick(match(1), Qt::Key_End);
    QTest::keyClicks(match(1), "!");
    EXPECT_THAT(matchesOnDisk(), ElementsAre("a.example", "b!", "Mail"));
    EXPECT_EQ(test::readText(rulesFile.string() + ".bak"), R"({"defaultProfile": "Theirs"})");
}

TEST_F(SettingsChangesTest, AMenuThatIsOpenMeetsTheRuleThatItWasOpenedFor) {
    open();
    const std::string theirs = R"({"rules": [{"kind": "url", "match": "new", "profile": ""},
        {"kind": "host", "match": "a.example", "profile": "Work"},
        {"kind": "url", "match": "b", "profile": "Home"}]})";
    whilePopupIsOpen(
        [this] {
            QContextMenuEvent event(QContextMenuEvent::Mouse, {2, 2},
                                    row(1)->mapToGlobal(QPoint(2, 2)));
            QApplication::sendEvent(row(1), &event);
        },
        [&](QWidget* popup) {
            writeRules(theirs);
            QTest::qWait(150);
            view->rulesFileChanged();
            EXPECT_EQ(match(1)->text(), "b") << "it waits for the end of the menu";
            popup->actions()[3]->trigger();
        });
    settle();
    EXPECT_THAT(matchesOnDisk(), ElementsAre("a.example", "Mail"));
    EXPECT_EQ(test::readText(rulesFile.string() + ".bak"), theirs);
}

TEST_F(SettingsChangesTest, WhatOthersWroteIsReadAfterTheMenuIsClosed) {
    open();
    whilePopupIsOpen(
        [this] {
            QContextMenuEvent event(QContextMenuEvent::Mouse, {2, 2},
                                    row(1)->mapToGlobal(QPoint(2, 2)));
            QApplication::sendEvent(row(1), &event);
        },
        [&](QWidget*) {
            writeRules(R"({"rules": [{"kind": "url", "match": "new", "profile": ""}]})");
            view->rulesFileChanged();
        });
    EXPECT_TRUE(QTest::qWaitFor([&] { return match(0)->text() == "new"; }, test::kLong));
}

TEST_F(SettingsChangesTest, WhatCannotBeSavedIsSaid) {
    open();
    const auto aside = dir.path().string() + "-aside";
    std::filesystem::rename(dir.path(), aside);
    test::writeText(dir.path(), "");
    match(0)->setFocus();
    QTest::keyClick(match(0), Qt::Key_End);
    QTest::keyClicks(match(0), "x");
    settle();
    EXPECT_TRUE(find<QLabel>(C::problem)->isVisible());
    EXPECT_THAT(find<QLabel>(C::problem)->text().toStdString(),
                ::testing::StartsWith("cannot save rules.json: "));
    EXPECT_EQ(match(0)->text(), "a.examplex");
    std::filesystem::remove(dir.path());
    std::filesystem::rename(aside, dir.path());
    QTest::keyClicks(match(0), "y");
    settle();
    EXPECT_FALSE(find<QLabel>(C::problem)->isVisible());
    EXPECT_EQ(onDisk().rules[0].match, "a.examplexy");
}

TEST_F(SettingsChangesTest, AnUndoSurvivesAReloadThatChangesNothing) {
    open();
    match(0)->setFocus();
    QTest::keyClick(match(0), Qt::Key_End);
    QTest::keyClicks(match(0), "x");
    store.reload();
    settle();
    QTest::keyClick(match(0), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(onDisk().rules[0].match, "a.example");
}

}  // namespace
}  // namespace ferrivane
