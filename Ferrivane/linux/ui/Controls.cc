#include "Ferrivane/linux/ui/Controls.h"

#include <QAbstractItemView>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <algorithm>

namespace ferrivane {
namespace {

constexpr int kWidestList = 480;
constexpr int kLongestText = 1 << 20;  // a longer one would be cut, and saved so

void name(QWidget* widget, const Control& control, const QString& text) {
    widget->setObjectName(qt(control.identifier));
    if (text.isEmpty()) return;
    widget->setAccessibleName(text);
    if (qobject_cast<QComboBox*>(widget) != nullptr) widget->setAccessibleDescription(text);
}

}  // namespace

QString withAccessKey(std::string_view title, char key) {
    QString text = qt(title);
    return text.insert(text.indexOf(QLatin1Char(key)), '&');
}

QString plainToolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? "<qt>" + text.toHtmlEscaped() + "</qt>" : text;
}

void identify(QWidget* widget, const Control& control) {
    name(widget, control, qt(control.name));
}

void identifyInRow(QWidget* widget, const Control& control, std::size_t index) {
    name(widget, control, qt(SettingsControls::nameInRow(control, index)));
}

Combo::Combo(int width, QWidget* parent) : QComboBox(parent) {
    setFixedWidth(width);
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(1);
    setFocusPolicy(Qt::StrongFocus);
    setMaxVisibleItems(20);
    connect(this, &QComboBox::currentTextChanged, this, [this] { updateToolTip(); });
}

void Combo::showChoices(const ProfilePicker::Choices& choices) {
    if (choices == shown_ && currentIndex() == static_cast<int>(choices.current)) return;
    if (choices.all != shown_.all) {
        clear();
        for (const auto& choice : choices.all) addItem(qt(choice.title), qt(choice.value));
    }
    shown_ = choices;
    setCurrentIndex(static_cast<int>(choices.current));
    updateToolTip();
}

void Combo::setHint(const QString& hint) {
    hint_ = hint;
    updateToolTip();
}

void Combo::showPopup() {
    const int wanted =
        view()->sizeHintForColumn(0) + 2 * style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    view()->setTextElideMode(Qt::ElideRight);
    view()->setMinimumWidth(std::clamp(wanted, width(), std::max(width(), kWidestList)));
    QComboBox::showPopup();
}

QString Combo::shortened() const {
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    return fontMetrics().elidedText(option.currentText, Qt::ElideRight, field.width() - 4);
}

void Combo::updateToolTip() {
    setToolTip(shortened() == currentText() ? hint_ : plainToolTip(currentText()));
}

void Combo::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    option.currentText = shortened();
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

Field::Field(QWidget* parent) : QLineEdit(parent) {
    setMaxLength(kLongestText);
    dimPlaceholder();
}

// A dark theme of the desktop may leave the placeholder in the colour of the light one.
void Field::dimPlaceholder() {
    QPalette dimmed = palette();
    QColor ink = dimmed.color(QPalette::Text);
    ink.setAlphaF(0.55F);
    if (dimmed.color(QPalette::PlaceholderText) == ink) return;
    dimmed.setColor(QPalette::PlaceholderText, ink);
    setPalette(dimmed);
}

void Field::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) dimPlaceholder();
}

void Field::showText(std::string_view text) {
    const QString shown = qt(text);
    if (shown == this->text()) return;
    setText(shown);
    if (!hasFocus()) setCursorPosition(0);  // a long text shows its beginning
}

// The toolkit's own style draws an edge that cannot be seen on a dark background.
void Field::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    const QPalette& colours = palette();
    const bool isDark = colours.color(QPalette::Base).lightnessF() < 0.5F;
    if (!isDark || hasFocus() || style()->name() != QLatin1String("fusion")) return;
    QColor edge = colours.color(QPalette::Text);
    edge.setAlphaF(0.45F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(edge);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
}

void Field::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasFormat(kRuleMimeType)) return event->ignore();
    QLineEdit::dragEnterEvent(event);
}

}  // namespace ferrivane
