#include "Ferrivane/linux/ui/Banner.h"

namespace ferrivane {

QLabel* plainLabel(std::string_view text, bool wraps) {
    auto* label = new QLabel(qt(text));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(wraps);
    return label;
}

Banner::Banner(const Control& text, const Control& button)
    : row_(new QHBoxLayout(this)),
      symbol_(new Symbol({}, Tint::orange, 20)),
      text_(plainLabel()),
      button_(new QPushButton) {
    identify(text_, text);
    identify(button_, button);
    row_->setContentsMargins({});
    row_->setSpacing(10);
    row_->addWidget(symbol_);
    row_->addWidget(text_, 1);
    row_->addWidget(button_);
}

void Banner::show(const SettingsView::Banner& banner) {
    const bool isGreen = banner.tint == SettingsView::Banner::Tint::green;
    symbol_->show(banner.symbol, isGreen ? Tint::green : Tint::orange);
    text_->setText(qt(banner.text));
    button_->setText(qt(banner.button));
    button_->setVisible(!banner.button.empty());
}

}  // namespace ferrivane
