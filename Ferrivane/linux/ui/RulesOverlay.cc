#include "Ferrivane/linux/ui/RulesOverlay.h"

#include <QPainter>
#include <QPainterPath>

#include "Ferrivane/SettingsWindow.h"

namespace ferrivane {

RulesOverlay::RulesOverlay(QWidget& list) : QWidget(&list) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void RulesOverlay::display(const std::optional<QRect>& insertionLine) {
    line_ = insertionLine;
    update();
}

void RulesOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (line_) painter.fillRect(*line_, palette().color(QPalette::Highlight));
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outline = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath inside;
    inside.addRoundedRect(outline, SettingsWindow::listRadius, SettingsWindow::listRadius);
    QPainterPath corners;
    corners.addRect(rect());
    painter.fillPath(corners - inside, palette().color(QPalette::Window));
    QColor separator = palette().color(QPalette::WindowText);
    separator.setAlphaF(0.25F);
    painter.setPen(separator);
    painter.drawPath(inside);
}

}  // namespace ferrivane
