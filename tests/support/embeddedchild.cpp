#include "support/embeddedchild.h"

#include "support/launcherscene.h"

#include <QTest>
#include <QWidget>

qulonglong childWindow()
{
    return DisplayApplication::display()
        .xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                  QStringLiteral("--name"), QStringLiteral("^SCN4070A 控制软件$")})
        .section(QLatin1Char('\n'), 0, 0)
        .toULongLong();
}

QRect childPlace()
{
    return DisplayApplication::display().placeOf(childWindow());
}

QRect placeOf(const QWidget* widget)
{
    return {widget->mapToGlobal(QPoint(0, 0)), widget->size()};
}

void clickInChild(const QPoint& point)
{
    const QPoint place = childPlace().topLeft() + point;
    DisplayApplication::display().click(place.x(), place.y());
    QTest::qWait(200);
}

QColor colorInChild(const QPoint& point)
{
    const QPoint place = childPlace().topLeft() + point;
    return DisplayApplication::display().colorAt(place.x(), place.y());
}

void dragInChild(const QPoint& from, const QPoint& by)
{
    constexpr int kSteps = 5;
    const XDisplay& display = DisplayApplication::display();
    const QPoint start = childPlace().topLeft() + from;
    display.movePointer(start.x(), start.y());
    display.press();
    for (int step = 1; step <= kSteps; ++step) {
        const QPoint place = start + by * step / kSteps;
        display.movePointer(place.x(), place.y());
    }
    display.release();
}
