// Over the rows: the outline of their list, and the line where a dragged rule will stand.
#pragma once

#include <QWidget>
#include <optional>

namespace ferrivane {

class RulesOverlay : public QWidget {
  public:
    explicit RulesOverlay(QWidget& list);

    // The line, in the list's coordinates; absent when nothing is dragged over a row.
    void display(const std::optional<QRect>& insertionLine);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::optional<QRect> line_;
};

}  // namespace ferrivane
