#include "Ferrivane/linux/ui/LinkTesterBox.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "Ferrivane/SettingsWindow.h"
#include "Ferrivane/linux/ui/Banner.h"
#include "Ferrivane/linux/ui/Symbols.h"

namespace ferrivane {

LinkTesterBox::LinkTesterBox(SettingsView& view)
    : QGroupBox(qt(SettingsView::testerTitle)),
      view_(view),
      url_(new Field),
      sender_(new Combo(SettingsWindow::senderWidth)),
      result_(stretching(plainLabel())) {
    identify(url_, SettingsControls::testURL);
    url_->setPlaceholderText(qt(SettingsView::testerPlaceholder));
    connect(url_, &QLineEdit::textChanged, this,
            [this](const QString& text) { view_.setTestURL(text.toStdString()); });
    identify(sender_, SettingsControls::testApp);
    connect(sender_, &QComboBox::activated, this, [this] {
        bool isProcess = false;
        const int process = sender_->currentValue().toInt(&isProcess);
        view_.setTestAppPid(isProcess ? std::optional(process) : std::nullopt);
    });
    identify(result_, SettingsControls::testResult);
    result_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    result_->setFocusPolicy(Qt::StrongFocus);

    auto* row = new QHBoxLayout;
    row->setSpacing(12);
    row->addWidget(url_, 1);
    row->addWidget(sender_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(kGroupMargins);
    column->setSpacing(6);
    column->addLayout(row);
    column->addWidget(result_);
}

void LinkTesterBox::render() {
    url_->showText(view_.testURL());
    ProfilePicker::Choices choices;
    const auto senders = view_.senders();
    choices.current = senders.current;
    for (const auto& [name, process] : senders.all) {
        choices.all.push_back({name, process ? std::to_string(*process) : ""});
    }
    sender_->showChoices(choices);
    showText(result_, view_.testResult());
}

void LinkTesterBox::applyColours() {
    setColour(result_, Tint::secondary);
    setFontScale(result_, 0.95);
}

}  // namespace ferrivane
