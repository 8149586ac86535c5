#include "Ferrivane/linux/ui/Banner.h"

#include <QApplication>

namespace ferrivane {

QLabel* plainLabel(std::string_view text, bool wraps) {
    auto* label = new QLabel(qt(text));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(wraps);
    return label;
}

QLabel* stretching(QLabel* label) {
    QSizePolicy policy = label->sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Ignored);
    label->setSizePolicy(policy);
    return label;
}

void setColour(QWidget* text, Tint tint) {
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::WindowText, colour(tint, palette));
    text->setPalette(palette);
}

void setFontScale(QWidget* text, qreal scale) {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * scale);
    text->setFont(font);
}

void showText(QLabel* label, std::string_view text) {
    if (label->text() == qt(text)) return;
    label->setText(qt(text));
    label->setToolTip(plainToolTip(qt(text)));
}

BannerRow::BannerRow(const Control& text, const Control& button)
    : row_(new QHBoxLayout(this)),
      symbol_(new Symbol({}, Tint::orange, 20)),
      text_(stretching(plainLabel())),
      button_(new QPushButton) {
    identify(text_, text);
    identify(button_, button);
    row_->setContentsMargins({});
    row_->setSpacing(10);
    row_->addWidget(symbol_);
    row_->addWidget(text_, 1);
    row_->addWidget(button_);
}

void BannerRow::display(const SettingsView::Banner& banner) {
    const bool isGreen = banner.tint == SettingsView::Banner::Tint::green;
    symbol_->display(banner.symbol, isGreen ? Tint::green : Tint::orange);
    showText(text_, banner.text);
    button_->setVisible(!banner.button.empty());
    if (!banner.button.empty()) button_->setText(withAccessKey(banner.button, banner.button[0]));
}

}  // namespace ferrivane
