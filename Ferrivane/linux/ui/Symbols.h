// Symbols of our own, so that they are there without an icon theme, under the names that macOS has
// for them.
#pragma once

#include <QIcon>
#include <QString>
#include <QWidget>
#include <string_view>

namespace ferrivane {

enum class Tint { text, secondary, green, orange, red };

// What stands on a window's background, light or dark.
QColor colour(Tint tint, const QPalette& palette);

// Drawn in the colour of the palette that is in use at that moment.
QIcon symbolIcon(std::string_view name, Tint tint = Tint::text);
// The application's own, in its colours.
QIcon applicationIcon();

// One symbol as it stands beside a text.
class Symbol : public QWidget {
  public:
    explicit Symbol(std::string_view name = {}, Tint tint = Tint::text, int size = 16);

    void display(std::string_view name, Tint tint);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QIcon icon_;
    const int size_;
};

}  // namespace ferrivane
