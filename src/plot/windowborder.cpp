#include "plot/windowborder.h"

#include <QColor>
#include <QPainter>
#include <QPen>
#include <QRect>
#include <QWidget>

namespace scn {

namespace {

constexpr int kWidth = 2;
constexpr qreal kRadius = 4.0;
const QLatin1String kActiveColor("#2BA1D5");
const QLatin1String kColor("#FFFFFF");
const QLatin1String kBackgroundColor("black"); // as the workspace behind the windows

} // namespace

void drawWindowBorder(QWidget* window, bool active)
{
    QPainter painter(window);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(active ? kActiveColor : kColor), kWidth, Qt::SolidLine,
                        Qt::SquareCap, Qt::BevelJoin));
    // The style gives the window no background, so windows below would show through the content.
    painter.setBrush(QColor(kBackgroundColor));
    painter.drawRoundedRect(QRect(1, 1, window->width() - 2, window->height() - 2), kRadius,
                            kRadius);
}

} // namespace scn
