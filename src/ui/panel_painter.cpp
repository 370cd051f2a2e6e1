#include "ui/panel_painter.h"

#include <QPainterPath>

namespace corvetta {

void paintPanel(QPainter& painter, const QRect& area, qreal radius, const QColor& fill,
                const QColor& border) {
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.fillPath(shape, fill);
    painter.setPen(QPen(border, 1));
    painter.drawPath(shape);
}

}  // namespace corvetta
