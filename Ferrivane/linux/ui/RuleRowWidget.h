// One rule in the list of the settings. The list binds it to a rule, and to another one when it
// scrolls.
#pragma once

#include <QToolButton>
#include <QWidget>
#include <array>
#include <functional>
#include <optional>

#include "Ferrivane/SettingsView.h"
#include "Ferrivane/linux/ui/Controls.h"

namespace ferrivane {

class RuleRowWidget : public QWidget {
  public:
    // What the row asks of its list.
    struct Requests {
        std::function<void(RuleRowWidget&)> drag;
        std::function<void(RuleRowWidget&, std::ptrdiff_t offset)> move;
        // The focus into the field of another row.
        std::function<void(RuleRowWidget&, std::ptrdiff_t offset)> step;
    };

    // The view outlives this.
    RuleRowWidget(SettingsView& view, Requests requests, QWidget* parent);

    void bind(std::size_t index);
    const Uuid& rule() const { return *rule_; }
    std::size_t index() const { return index_; }

    // In the order of the Tab key; those that are shown.
    std::vector<QWidget*> controls() const;
    // Has it, or will have it when the window is active again.
    bool holdsFocus() const;
    void focusMatch();

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fillIn();
    void showContextMenu(const QPoint& place);

    SettingsView& view_;
    const Requests requests_;
    std::optional<Uuid> rule_;
    std::size_t index_ = 0;
    std::optional<QPoint> pressed_;
    QWidget* handle_;
    Combo* kind_;
    Field* match_;
    QToolButton* fillIn_;
    Combo* profile_;
    QToolButton* remove_;
};

}  // namespace ferrivane
