// What the widgets of the settings have in common.
#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QString>
#include <QWheelEvent>
#include <QWidget>
#include <string>
#include <string_view>

#include "Ferrivane/ProfilePicker.h"
#include "Ferrivane/SettingsControls.h"

namespace ferrivane {

inline QString qt(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// The title with an access key, which is pressed with Alt: the first such letter in it.
QString withAccessKey(std::string_view title, char key);

// A tool tip that is not taken for markup.
QString plainToolTip(const QString& text);

// Gives the control its identifier and the name that is read out. Qt reads a combo box's current
// text out as its name; such a control gets the name as its description too.
void identify(QWidget* widget, const Control& control);
void identifyInRow(QWidget* widget, const Control& control, std::size_t index);

// What is dragged within the rules; beside the text that everybody can take.
inline constexpr const char* kRuleMimeType = "application/x-ferrivane-rule";

// Not changed by the wheel, which scrolls what it stands in: a choice is saved at once. A long text
// is shortened, and whole in the tool tip.
class Combo : public QComboBox {
  public:
    explicit Combo(int width, QWidget* parent = nullptr);

    // Shown unless it is what is shown already.
    void showChoices(const ProfilePicker::Choices& choices);
    QString currentValue() const { return currentData().toString(); }
    void setHint(const QString& hint);

    void showPopup() override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }

  private:
    QString shortened() const;
    void updateToolTip();

    ProfilePicker::Choices shown_;
    QString hint_;
};

// A rule dragged over it goes on to the list.
class Field : public QLineEdit {
  public:
    explicit Field(QWidget* parent = nullptr);

    // Keeps the cursor and what can be undone when the text is the same.
    void showText(std::string_view text);

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;

  private:
    void dimPlaceholder();
};

}  // namespace ferrivane
