#include "Ferrivane/linux/ui/MainMenuBar.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <optional>

#include "Ferrivane/linux/ui/Controls.h"

namespace ferrivane {
namespace {

// "Z" is pressed with Shift.
QKeySequence shortcut(const std::string& key) {
    if (key.empty()) return {};
    const QString text = qt(key);
    const bool isUpper = text.toUpper() != text.toLower() && text == text.toUpper();
    return QKeySequence((isUpper ? "Ctrl+Shift+" : "Ctrl+") + text.toUpper());
}

std::optional<QKeySequence::StandardKey> editing(Command command) {
    switch (command) {
        case Command::undo:
            return QKeySequence::Undo;
        case Command::redo:
            return QKeySequence::Redo;
        case Command::cut:
            return QKeySequence::Cut;
        case Command::copy:
            return QKeySequence::Copy;
        case Command::paste:
            return QKeySequence::Paste;
        case Command::selectAll:
            return QKeySequence::SelectAll;
        default:
            return std::nullopt;
    }
}

bool canEdit(QWidget* focused, Command command) {
    if (const auto* field = qobject_cast<QLineEdit*>(focused)) {
        switch (command) {
            case Command::undo:
                return field->isUndoAvailable();
            case Command::redo:
                return field->isRedoAvailable();
            case Command::cut:
            case Command::copy:
                return field->hasSelectedText();
            case Command::paste:
                return !QApplication::clipboard()->text().isEmpty();
            default:
                return !field->text().isEmpty();
        }
    }
    const auto* label = qobject_cast<QLabel*>(focused);
    if (label == nullptr) return false;
    return command == Command::selectAll || (command == Command::copy && label->hasSelectedText());
}

// The focused widget does it as if its keys were pressed.
void edit(QKeySequence::StandardKey key) {
    QWidget* const focused = QApplication::focusWidget();
    if (focused == nullptr) return;
    const QKeyCombination keys = QKeySequence(key)[0];
    QKeyEvent press(QEvent::KeyPress, keys.key(), keys.keyboardModifiers());
    QApplication::sendEvent(focused, &press);
}

void performHere(QMainWindow& window, Command command) {
    if (command == Command::close) window.close();
    if (command == Command::minimize) window.showMinimized();
    if (command != Command::hide) return;
    for (QWidget* other : QApplication::topLevelWidgets()) {
        if (other->isWindow() && other->isVisible()) other->showMinimized();
    }
}

}  // namespace

void installMenuBar(QMainWindow& window, const std::vector<Menu>& menus,
                    const std::function<void(Command)>& perform,
                    const std::function<void()>& about) {
    for (const Menu& menu : menus) {
        QMenu* const shown = window.menuBar()->addMenu("&" + qt(menu.title));
        for (const MenuItem& item : menu.items) {
            if (item.command == Command::separator) {
                shown->addSeparator();
                continue;
            }
            QAction* const action = shown->addAction(qt(item.title));
            action->setShortcut(shortcut(item.key));
            const Command command = item.command;
            if (const auto key = editing(command)) {
                // A field takes its keys by itself; these are for the mouse.
                action->setShortcutContext(Qt::WidgetShortcut);
                QObject::connect(action, &QAction::triggered, action, [key] { edit(*key); });
                QObject::connect(shown, &QMenu::aboutToShow, action, [action, command] {
                    action->setEnabled(canEdit(QApplication::focusWidget(), command));
                });
                continue;
            }
            QObject::connect(action, &QAction::triggered, action,
                             [&window, command, perform, about] {
                                 if (command == Command::about) return about();
                                 performHere(window, command);
                                 perform(command);
                             });
        }
    }
}

}  // namespace ferrivane
