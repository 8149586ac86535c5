// The main menu in the settings window, and what the application says about itself.
#include <QClipboard>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>

#include "tests/ui/SettingsCase.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;

class MenuBarTest : public test::SettingsCase {
  protected:
    QMenu* menu(int index) const { return window->menuBar()->actions().at(index)->menu(); }
    QAction* item(const QString& title) const {
        for (QAction* top : window->menuBar()->actions()) {
            for (QAction* action : top->menu()->actions()) {
                if (action->text() == title) return action;
            }
        }
        return nullptr;
    }
    static std::vector<std::string> shown(const QMenu& menu) {
        std::vector<std::string> lines;
        for (const QAction* action : menu.actions()) {
            std::string line = action->isSeparator() ? "-" : action->text().toStdString();
            if (!action->shortcut().isEmpty()) {
                line += " [" + action->shortcut().toString().toStdString() + "]";
            }
            lines.push_back(line);
        }
        return lines;
    }
};

TEST_F(MenuBarTest, Contents) {
    open();
    ASSERT_EQ(window->menuBar()->actions().size(), 3);
    EXPECT_EQ(menu(0)->title(), "&Ferrivane");
    EXPECT_THAT(shown(*menu(0)), ElementsAre("About Ferrivane", "-", "Settings… [Ctrl+,]", "-",
                                             "Hide Ferrivane [Ctrl+H]", "Quit Ferrivane [Ctrl+Q]"));
    EXPECT_EQ(menu(1)->title(), "&Edit");
    EXPECT_THAT(shown(*menu(1)),
                ElementsAre("Undo [Ctrl+Z]", "Redo [Ctrl+Shift+Z]", "-", "Cut [Ctrl+X]",
                            "Copy [Ctrl+C]", "Paste [Ctrl+V]", "Select All [Ctrl+A]"));
    EXPECT_EQ(menu(2)->title(), "&Window");
    EXPECT_THAT(shown(*menu(2)), ElementsAre("Close [Ctrl+W]", "Minimize [Ctrl+M]"));
}

TEST_F(MenuBarTest, TheApplicationPerformsWhatTheToolkitCannot) {
    open();
    QTest::keyClick(window.get(), Qt::Key_Comma, Qt::ControlModifier);
    QTest::keyClick(window.get(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_THAT(performed, ElementsAre(Command::settings, Command::quit));
}

TEST_F(MenuBarTest, CloseAndMinimize) {
    open();
    QTest::keyClick(window.get(), Qt::Key_M, Qt::ControlModifier);
    EXPECT_TRUE(window->isMinimized());
    window->present();
    EXPECT_FALSE(window->isMinimized());
    QTest::keyClick(window.get(), Qt::Key_H, Qt::ControlModifier);
    EXPECT_TRUE(window->isMinimized());
    window->present();
    QTest::keyClick(window.get(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(MenuBarTest, EditsTheFocusedField) {
    open();
    QLineEdit* const field = match(0);
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "new");
    const auto choose = [this](const char* title) {
        emit menu(1)->aboutToShow();
        EXPECT_TRUE(item(title)->isEnabled()) << title;
        item(title)->trigger();
    };
    choose("Undo");
    EXPECT_EQ(onDisk().rules[0].match, field->text().toStdString()) << "undoing is an edit";
    EXPECT_NE(field->text(), "new");
    choose("Redo");
    EXPECT_EQ(field->text(), "new");
    choose("Select All");
    choose("Cut");
    EXPECT_EQ(field->text(), "");
    EXPECT_EQ(onDisk().rules[0].match, "");
    choose("Paste");
    choose("Paste");
    EXPECT_EQ(field->text(), "newnew");
    EXPECT_EQ(onDisk().rules[0].match, "newnew");
    emit menu(1)->aboutToShow();
    EXPECT_FALSE(item("Copy")->isEnabled()) << "nothing is selected";
}

TEST_F(MenuBarTest, NothingToEdit) {
    open();
    window->setFocus();
    if (QWidget* focused = QApplication::focusWidget()) focused->clearFocus();
    emit menu(1)->aboutToShow();
    for (const char* title : {"Undo", "Redo", "Cut", "Copy", "Paste", "Select All"}) {
        EXPECT_FALSE(item(title)->isEnabled()) << title;
    }
}

TEST_F(MenuBarTest, About) {
    open();
    for (int times = 0; times < 2; ++times) item("About Ferrivane")->trigger();
    const auto dialogs = window->findChildren<QDialog*>("about");
    ASSERT_EQ(dialogs.size(), 1);
    EXPECT_TRUE(dialogs[0]->isVisible());
    std::vector<std::string> texts;
    for (const QLabel* label : dialogs[0]->findChildren<QLabel*>()) {
        if (!label->text().isEmpty()) texts.push_back(label->text().toStdString());
        EXPECT_EQ(label->pixmap().isNull(), !label->text().isEmpty());
    }
    EXPECT_THAT(texts, ::testing::IsSupersetOf({std::string("Ferrivane 1.2")}));
    EXPECT_THAT(texts, ::testing::Contains(::testing::HasSubstr("MIT")));
    QTest::keyClick(dialogs[0], Qt::Key_Escape);
    EXPECT_FALSE(dialogs[0]->isVisible());
}

}  // namespace
}  // namespace ferrivane
