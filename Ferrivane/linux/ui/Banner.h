// A line of the settings with a symbol in front of it and buttons behind.
#pragma once

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "Ferrivane/SettingsView.h"
#include "Ferrivane/linux/ui/Controls.h"
#include "Ferrivane/linux/ui/Symbols.h"

namespace ferrivane {

// Within a titled box.
inline constexpr QMargins kGroupMargins(12, 8, 12, 8);

class BannerRow : public QWidget {
  public:
    BannerRow(const Control& text, const Control& button);

    QPushButton* button() const { return button_; }
    void addButton(QPushButton* more) { row_->addWidget(more); }
    void display(const SettingsView::Banner& banner);

  private:
    QHBoxLayout* row_;
    Symbol* symbol_;
    QLabel* text_;
    QPushButton* button_;
};

// A text that wraps, and is never read as markup.
QLabel* plainLabel(std::string_view text = {}, bool wraps = true);
// Takes the width that is there: a long word does not widen the window.
QLabel* stretching(QLabel* label);
// As the application's colours and letters are now.
void setColour(QWidget* text, Tint tint);
void setFontScale(QWidget* text, qreal scale);
// Shows the text unless it is shown, which keeps what is selected; whole in the tool tip.
void showText(QLabel* label, std::string_view text);

}  // namespace ferrivane
