// Shows where a link would open.
#pragma once

#include <QGroupBox>

#include "Ferrivane/SettingsView.h"

class QLabel;

namespace ferrivane {

class Combo;
class Field;

class LinkTesterBox : public QGroupBox {
  public:
    // The view outlives this.
    explicit LinkTesterBox(SettingsView& view);

    void render();
    void applyColours();

  private:
    SettingsView& view_;
    Field* url_;
    Combo* sender_;
    QLabel* result_;
};

}  // namespace ferrivane
