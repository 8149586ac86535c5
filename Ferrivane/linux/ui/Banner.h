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

class Banner : public QWidget {
  public:
    Banner(const Control& text, const Control& button);

    QPushButton* button() const { return button_; }
    void addButton(QPushButton* more) { row_->addWidget(more); }
    void show(const SettingsView::Banner& banner);

  private:
    QHBoxLayout* row_;
    Symbol* symbol_;
    QLabel* text_;
    QPushButton* button_;
};

// A text that wraps, and is never read as markup.
QLabel* plainLabel(std::string_view text = {}, bool wraps = true);

}  // namespace ferrivane
