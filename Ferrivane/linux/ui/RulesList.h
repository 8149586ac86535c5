// The list of rules. It has widgets for the rows that are seen only, so that a thousand rules cost
// no more than ten.
#pragma once

#include <QAbstractScrollArea>
#include <QTimer>
#include <optional>
#include <vector>

#include "Ferrivane/SettingsView.h"
#include "Ferrivane/linux/ui/RuleRowWidget.h"
#include "Ferrivane/linux/ui/RulesOverlay.h"

namespace ferrivane {

class RulesList : public QAbstractScrollArea {
  public:
    // The view outlives this.
    explicit RulesList(SettingsView& view, QWidget* parent = nullptr);

    // Shows the rules as they are now.
    void render();
    // Scrolls to the rule, which has a row from then on.
    RuleRowWidget* reveal(std::size_t index);
    int rowHeight() const { return rowHeight_; }

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool focusNextPrevChild(bool next) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    std::size_t count() const { return view_.store().config().rules.size(); }
    void measure();
    void showInsertionLine();
    void arrange();
    RuleRowWidget* row(std::size_t index) const;
    RuleRowWidget* unusedRow(std::vector<RuleRowWidget*>& unused, std::size_t index);
    void chain();
    void drag(RuleRowWidget& row);
    void move(RuleRowWidget& row, std::ptrdiff_t offset);
    void step(RuleRowWidget& row, std::ptrdiff_t offset);
    void setTarget(const std::optional<Uuid>& rule);
    std::optional<Uuid> ruleAt(int y) const;
    void scrollWhileDragging();

    SettingsView& view_;
    std::vector<RuleRowWidget*> rows_;   // all that were made, shown or not
    std::vector<RuleRowWidget*> shown_;  // by index
    std::vector<QWidget*> chained_;      // the controls of those, as the Tab key goes
    int rowHeight_ = 1;
    std::optional<Uuid> target_;  // the rule under a drag
    QTimer autoScroll_;
    int pointerY_ = 0;  // of a drag
    RulesOverlay* overlay_;
};

}  // namespace ferrivane
