// panel_painter.h: Paints the rounded, bordered panel each of our windows and cards stands on.
#pragma once

#include <QColor>
#include <QPainter>
#include <QRect>

namespace corvetta {

// Fills `area` as a rounded panel and draws its one-pixel border on the half pixel inside, so the
// line is crisp and never clipped. Turns on antialiasing for what the caller paints next.
void paintPanel(QPainter& painter, const QRect& area, qreal radius, const QColor& fill,
                const QColor& border);

}  // namespace corvetta
