#include "Ferrivane/linux/ui/Alert.h"

#include <QAccessible>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QTextDocument>
#include <algorithm>
#include <utility>

namespace ferrivane {
namespace {

constexpr int kTextWidth = 440;
constexpr int kMostLines = 10;

// Wraps a link of any length, is never read as markup, can be selected, and scrolls when long.
QPlainTextEdit* details(const QString& text, QWidget* parent) {
    auto* edit = new QPlainTextEdit(parent);
    edit->setPlainText(text);
    edit->setReadOnly(true);
    edit->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    edit->setFrameShape(QFrame::NoFrame);
    edit->setTabChangesFocus(true);
    edit->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    edit->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QPalette palette = edit->palette();
    palette.setBrush(QPalette::Base, Qt::transparent);
    edit->setPalette(palette);
    edit->document()->setDocumentMargin(0);
    edit->setFixedWidth(kTextWidth);
    const QRect wrapped = edit->fontMetrics().boundingRect(
        {0, 0, kTextWidth - edit->style()->pixelMetric(QStyle::PM_ScrollBarExtent), 0},
        Qt::TextWordWrap | Qt::TextWrapAnywhere, text);
    const int tallest = edit->fontMetrics().lineSpacing() * kMostLines;
    edit->setFixedHeight(std::min(wrapped.height() + edit->fontMetrics().leading() + 4, tallest));
    return edit;
}

}  // namespace

Alert::Alert(const LaunchFailureAlert& alert, std::function<void(std::size_t button)> answered)
    : button_(alert.buttons.size() - 1), answered_(std::move(answered)) {
    setWindowTitle(QStringLiteral("Ferrivane"));
    setObjectName(QStringLiteral("launchFailure"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* icon = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(
        style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(size));
    auto* title = new QLabel(QString::fromStdString(alert.title), this);
    title->setTextFormat(Qt::PlainText);
    title->setWordWrap(true);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto* text = details(QString::fromStdString(alert.informativeText), this);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addStretch();
    for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
        auto* button = new QPushButton(QString::fromStdString(alert.buttons[i]), this);
        button->setAutoDefault(true);
        button->setDefault(i == 0);
        connect(button, &QPushButton::clicked, this, [this, i] {
            button_ = i;
            accept();
        });
        if (i == 0) button->setFocus();
        buttons->addWidget(button);
    }

    auto* layout = new QGridLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->setHorizontalSpacing(16);
    layout->setVerticalSpacing(8);
    layout->setRowMinimumHeight(2, 40);
    layout->setContentsMargins(18, 18, 18, 18);
    layout->addWidget(icon, 0, 0, 2, 1, Qt::AlignTop);
    layout->addWidget(title, 0, 1);
    layout->addWidget(text, 1, 1);
    layout->addLayout(buttons, 2, 0, 1, 2, Qt::AlignBottom);

    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void Alert::done(int result) {
    QDialog::done(result);
    if (answered_) std::exchange(answered_, nullptr)(button_);
}

}  // namespace ferrivane
