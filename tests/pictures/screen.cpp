#include "screen.h"

#include "support/looks.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <QtTest>

namespace {

/// For what the window system does without notice once the program is done.
constexpr int kSettleMs = 300;
/// For an event to come from the server.
constexpr int kEventMs = 60;
constexpr int kToolWaitMs = 20000;
constexpr int kLoopPollMs = 100;
constexpr int kMostNotches = 60;
constexpr int kMargin = 8; ///< around a part of the display
/// PNG quality: how little it is compressed.
constexpr int kSmallestFile = 0;

constexpr char kLeft[] = "1";
constexpr char kRight[] = "3";
constexpr char kWheelUp[] = "4";
constexpr char kWheelDown[] = "5";
constexpr char kWheelLeft[] = "6";
constexpr char kWheelRight[] = "7";

void act(const QStringList& arguments)
{
    QCOMPARE(QProcess::execute(QStringLiteral("xdotool"), arguments), 0);
    QTest::qWait(kEventMs);
}

QStringList moveTo(const QPoint& global)
{
    return {QStringLiteral("mousemove"), QString::number(global.x()), QString::number(global.y())};
}

QStringList clickOf(const char* button)
{
    return {QStringLiteral("click"), QLatin1String(button)};
}

bool isInView(const QWidget* widget)
{
    return QRegion(widget->rect()).subtracted(widget->visibleRegion()).isEmpty();
}

/// The wheel's button that brings the wanted widget nearer.
const char* wheelTowards(const QWidget* over, const QWidget* wanted)
{
    const QRect view(over->mapToGlobal(QPoint()), over->size());
    const QRect target(wanted->mapToGlobal(QPoint()), wanted->size());
    if (target.bottom() > view.bottom()) {
        return kWheelDown;
    }
    if (target.top() < view.top()) {
        return kWheelUp;
    }
    return target.right() > view.right() ? kWheelRight : kWheelLeft;
}

QRect onDisplay(const QWidget* widget)
{
    return QRect(widget->mapToGlobal(QPoint()), widget->size());
}

/// The place of a widget and of what is open over it, with a margin.
QRect shownWith(const QWidget* part)
{
    QRect place = onDisplay(part);
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowType() == Qt::Popup) {
            place |= onDisplay(window);
        }
    }
    const QMargins margin(kMargin, kMargin, kMargin, kMargin);
    return place.marginsAdded(margin) & QApplication::primaryScreen()->geometry();
}

} // namespace

QSize screen::size()
{
    return QApplication::primaryScreen()->size();
}

void screen::take(const QString& name, const QWidget* part)
{
    QTest::qWait(kSettleMs);
    takeAtOnce(name, part);
}

void screen::takeAtOnce(const QString& name, const QWidget* part)
{
    const QImage display = QApplication::primaryScreen()->grabWindow(0).toImage();
    const QStringList problems = looks::problems(display);
    const QImage picture = part ? display.copy(shownWith(part)) : display;
    const QDir directory(qEnvironmentVariable("SCN_PICTURES", QDir::currentPath()));
    const QString file = directory.filePath(name + QStringLiteral(".png"));
    QVERIFY2(picture.convertToFormat(QImage::Format_RGB32).save(file, "png", kSmallestFile),
             qPrintable(file));
    const QString list = name + QStringLiteral(": ") + problems.join(QStringLiteral("; "));
    QVERIFY2(problems.isEmpty(), list.toUtf8().constData());
}

void screen::movePointer(const QWidget* widget)
{
    movePointer(widget, widget->rect().center());
}

void screen::movePointer(const QWidget* widget, const QPoint& point)
{
    act(moveTo(widget->mapToGlobal(point)));
}

void screen::movePointerAway()
{
    act(moveTo(QPoint(size().width() / 2, size().height() - 1)));
}

void screen::click(const QWidget* widget)
{
    click(widget, widget->rect().center());
}

void screen::click(const QWidget* widget, const QPoint& point)
{
    act(moveTo(widget->mapToGlobal(point)) + clickOf(kLeft));
}

void screen::doubleClick(const QWidget* widget, const QPoint& point)
{
    act(moveTo(widget->mapToGlobal(point)) + clickOf(kLeft) + clickOf(kLeft));
}

void screen::rightClick(const QWidget* widget)
{
    act(moveTo(widget->mapToGlobal(widget->rect().center())) + clickOf(kRight));
}

void screen::pressButton()
{
    act({QStringLiteral("mousedown"), QLatin1String(kLeft)});
}

void screen::releaseButton()
{
    act({QStringLiteral("mouseup"), QLatin1String(kLeft)});
}

void screen::scrollTo(const QWidget* over, const QWidget* wanted)
{
    for (int notch = 0; notch < kMostNotches && !isInView(wanted); ++notch) {
        act(moveTo(over->mapToGlobal(QPoint(over->width() / 2, 1))) +
            clickOf(wheelTowards(over, wanted)));
    }
    QVERIFY(isInView(wanted));
}

void screen::press(const QStringList& keys)
{
    act(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("30")} + keys);
}

void screen::type(const QString& text)
{
    act({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), text});
}

void screen::giveKeysTo(const QWidget* window)
{
    act({QStringLiteral("windowfocus"), QStringLiteral("--sync"),
         QString::number(window->winId())});
}

void screen::inLoopOf(const std::function<void()>& open, const std::function<void()>& work)
{
    QTimer look;
    bool done = false;
    QObject::connect(&look, &QTimer::timeout, &look, [&look, &done, &work] {
        if (QApplication::activePopupWidget() || QApplication::activeModalWidget()) {
            look.stop();
            work();
            done = true;
        }
    });
    look.start(kLoopPollMs);
    open();
    QTRY_VERIFY(done);
}
