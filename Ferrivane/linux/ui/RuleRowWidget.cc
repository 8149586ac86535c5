#include "Ferrivane/linux/ui/RuleRowWidget.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOptionFocusRect>
#include <utility>

#include "Ferrivane/RuleRow.h"
#include "Ferrivane/SettingsWindow.h"
#include "Ferrivane/linux/ui/RulesList.h"
#include "Ferrivane/linux/ui/Symbols.h"

namespace ferrivane {
namespace {

namespace Measures = SettingsWindow::Row;

// Takes the focus, so that a rule can be moved without a mouse.
class Handle : public QWidget {
  public:
    explicit Handle(QWidget* parent) : QWidget(parent) {
        setFixedSize(Measures::handle.width, Measures::handle.height);
        setFocusPolicy(Qt::TabFocus);
        setCursor(Qt::OpenHandCursor);
        setToolTip(qt(RuleRow::handleToolTip));
        setAccessibleDescription(QStringLiteral("Up and Down move the rule"));
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        symbolIcon("line.3.horizontal", Tint::secondary).paint(&painter, rect());
        if (hasFocus()) style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
    }
};

QToolButton* borderless(std::string_view symbol, std::string_view toolTip, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setIcon(symbolIcon(symbol));
    button->setToolTip(qt(toolTip));
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

// The toolkit takes the list, its rows and their handles for mere boxes.
QAccessibleInterface* accessible(const QString&, QObject* object) {
    if (auto* row = dynamic_cast<RuleRowWidget*>(object)) {
        return new QAccessibleWidget(row, QAccessible::ListItem);
    }
    if (auto* handle = dynamic_cast<Handle*>(object)) {
        return new QAccessibleWidget(handle, QAccessible::Button);
    }
    if (auto* list = dynamic_cast<RulesList*>(object)) {
        return new QAccessibleWidget(list, QAccessible::List);
    }
    return nullptr;
}

}  // namespace

RuleRowWidget::RuleRowWidget(SettingsView& view, Requests requests, QWidget* parent)
    : QWidget(parent),
      view_(view),
      requests_(std::move(requests)),
      handle_(new Handle(this)),
      kind_(new Combo(Measures::kindWidth, this)),
      match_(new Field(this)),
      fillIn_(borderless("app.badge.checkmark", RuleRow::fillInToolTip, this)),
      profile_(new Combo(Measures::profileWidth, this)),
      remove_(borderless("minus.circle", RuleRow::removeToolTip, this)) {
    for (QWidget* control : {handle_, static_cast<QWidget*>(kind_), static_cast<QWidget*>(match_),
                             static_cast<QWidget*>(fillIn_), static_cast<QWidget*>(profile_),
                             static_cast<QWidget*>(remove_)}) {
        control->installEventFilter(this);
    }
    [[maybe_unused]] static const bool installed = (QAccessible::installFactory(accessible), true);
    auto* arrow = new Symbol("arrow.right", Tint::secondary);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Measures::padding.width, Measures::padding.height,
                            Measures::padding.width, Measures::padding.height);
    row->setSpacing(8);
    row->addWidget(handle_);
    row->addWidget(kind_);
    row->addWidget(match_, 1);
    row->addWidget(fillIn_);
    row->addWidget(arrow);
    row->addWidget(profile_);
    row->addWidget(remove_);
    setAutoFillBackground(true);

    for (const auto& kind : RuleRow::kinds) kind_->addItem(qt(kind.label));
    connect(kind_, &QComboBox::activated, this, [this](int chosen) {
        view_.setKind(*rule_, RuleRow::kinds.at(static_cast<std::size_t>(chosen)).kind);
    });
    // Not textEdited: assistive programs set the text.
    connect(match_, &QLineEdit::textChanged, this,
            [this](const QString& text) { view_.setMatch(*rule_, text.toStdString()); });
    connect(profile_, &QComboBox::activated, this,
            [this] { view_.setProfile(*rule_, profile_->currentValue().toStdString()); });
    connect(remove_, &QToolButton::clicked, this, [this] { view_.removeRule(Uuid(*rule_)); });
    auto* menu = new QMenu(fillIn_);
    fillIn_->setMenu(menu);
    fillIn_->setPopupMode(QToolButton::InstantPopup);
    connect(menu, &QMenu::aboutToShow, this, &RuleRowWidget::fillIn);
}

void RuleRowWidget::bind(std::size_t index) {
    const Rule& rule = view_.store().config().rules.at(index);
    const bool isOther = rule_ != rule.id;
    rule_ = rule.id;
    if (isOther || index != index_ || objectName().isEmpty()) {
        index_ = index;
        using namespace SettingsControls;
        const std::pair<QWidget*, const Control&> named[] = {{this, SettingsControls::rule},
                                                             {handle_, handle},
                                                             {kind_, kind},
                                                             {match_, match},
                                                             {fillIn_, SettingsControls::fillIn},
                                                             {profile_, profile},
                                                             {remove_, remove}};
        for (const auto& [widget, control] : named) identifyInRow(widget, control, index);
        setBackgroundRole(index % 2 == 0 ? QPalette::Base : QPalette::AlternateBase);
    }
    for (std::size_t i = 0; i < RuleRow::kinds.size(); ++i) {
        if (RuleRow::kinds.at(i).kind == rule.kind) kind_->setCurrentIndex(static_cast<int>(i));
    }
    {
        const QSignalBlocker shown(match_);  // nobody edits here
        if (isOther) match_->clear();        // what can be undone is the other rule's
        match_->showText(rule.match);
    }
    match_->setPlaceholderText(qt(view_.matchPlaceholder(rule.kind)));
    fillIn_->setVisible(RuleRow::hasFillInMenu(rule.kind));
    fillIn_->setEnabled(view_.canFillIn());
    profile_->showChoices(view_.profileChoices(rule.profile));
    if (isOther && match_->hasFocus()) view_.setFocusedRule(rule_);
}

std::vector<QWidget*> RuleRowWidget::controls() const {
    std::vector<QWidget*> shown{handle_, kind_, match_};
    if (!fillIn_->isHidden()) shown.push_back(fillIn_);
    shown.insert(shown.end(), {profile_, remove_});
    return shown;
}

bool RuleRowWidget::holdsFocus() const {
    const QWidget* const focused = window()->focusWidget();
    return focused != nullptr && isAncestorOf(focused);
}

void RuleRowWidget::focusMatch() {
    if (!match_->hasFocus()) match_->setFocus(Qt::OtherFocusReason);
}

void RuleRowWidget::fillIn() {
    QMenu* const menu = fillIn_->menu();
    menu->clear();
    for (const RunningApp& app : view_.runningApps()) {
        menu->addAction(
            qt(app.name).replace('&', "&&"), this,
            [this, rule = *rule_, text = app.matchValue] { view_.setMatch(rule, text); });
    }
}

// A press on anything but a control begins a drag, or is a click that does nothing.
void RuleRowWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) pressed_ = event->pos();
}

void RuleRowWidget::mouseMoveEvent(QMouseEvent* event) {
    if (!pressed_ || !(event->buttons() & Qt::LeftButton)) return;
    if ((event->pos() - *pressed_).manhattanLength() < QApplication::startDragDistance()) return;
    pressed_.reset();
    requests_.drag(*this);
}

void RuleRowWidget::contextMenuEvent(QContextMenuEvent* event) {
    showContextMenu(event->globalPos());
}

void RuleRowWidget::showContextMenu(const QPoint& place) {
    QMenu menu(this);
    const Uuid rule = *rule_;
    const auto items = RuleRow::contextMenu(view_.canMoveUp(index_), view_.canMoveDown(index_));
    for (const auto& item : items) {
        using enum RuleRow::ContextItem::Action;
        if (item.action == divider) {
            menu.addSeparator();
            continue;
        }
        QAction* const action = menu.addAction(qt(item.title), this, [this, rule, &item] {
            if (item.action == remove) return view_.removeRule(rule);
            requests_.move(*this, item.action == moveUp ? -1 : 1);
        });
        action->setEnabled(item.isEnabled);
    }
    menu.exec(place);
}

// Alt with an arrow moves the rule from anywhere in its row. The arrow alone: on the handle too; in
// the field it goes to that of another row.
void RuleRowWidget::keyPressEvent(QKeyEvent* event) {
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const bool isArrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    const std::ptrdiff_t offset = event->key() == Qt::Key_Up ? -1 : 1;
    if (isPlain && handle_->hasFocus()) {
        if (isArrow) return requests_.move(*this, offset);
        if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return) {
            return showContextMenu(handle_->mapToGlobal(handle_->rect().bottomLeft()));
        }
    }
    if (isPlain && isArrow && match_->hasFocus()) return requests_.step(*this, offset);
    QWidget::keyPressEvent(event);
}

bool RuleRowWidget::eventFilter(QObject* watched, QEvent* event) {
    // Before a control does something else with these keys.
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool isArrow = key->key() == Qt::Key_Up || key->key() == Qt::Key_Down;
        if (isArrow && (key->modifiers() & ~Qt::KeypadModifier) == Qt::AltModifier) {
            requests_.move(*this, key->key() == Qt::Key_Up ? -1 : 1);
            return true;
        }
    }
    // The field is being edited while it has the focus in the active window; a menu over it changes
    // nothing.
    if (watched == match_ && event->type() == QEvent::FocusIn) view_.setFocusedRule(rule_);
    if (watched == match_ && event->type() == QEvent::FocusOut &&
        static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
        view_.setFocusedRule(std::nullopt);
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace ferrivane
