#include "plot/timewindow.h"
#include "support/testprogram.h"

#include <QtTest>

using scn::TimeSpan;
using scn::TimeWindow;

namespace {

constexpr qint64 kFirst = 1000000;

void compare(const TimeSpan& span, qint64 start, qint64 end)
{
    QCOMPARE(span.start, start);
    QCOMPARE(span.end, end);
}

} // namespace

class TestTimeWindow : public QObject
{
    Q_OBJECT

private slots:
    void firstReadingOpensAMinute();
    void windowFillsUpToItsEdge();
    void readingAtTheEdgeScrolls();
    void stretchedWindowKeepsItsStart();
};

void TestTimeWindow::firstReadingOpensAMinute()
{
    TimeWindow window;
    QVERIFY(!window.isFilling());
    compare(window.follow(kFirst), kFirst, kFirst + 60000);
    QVERIFY(window.isFilling());
}

void TestTimeWindow::windowFillsUpToItsEdge()
{
    TimeWindow window;
    window.follow(kFirst);
    compare(window.follow(kFirst + 59999), kFirst, kFirst + 60000);
    // A late reading does not move it either.
    compare(window.follow(kFirst - 5000), kFirst, kFirst + 60000);
    QVERIFY(window.isFilling());
}

void TestTimeWindow::readingAtTheEdgeScrolls()
{
    TimeWindow window;
    window.follow(kFirst);
    compare(window.follow(kFirst + 60000), kFirst, kFirst + 60000);
    QVERIFY(!window.isFilling());
    compare(window.follow(kFirst + 61000), kFirst + 1000, kFirst + 61000);
    // Once it scrolls, an earlier reading also moves it back.
    compare(window.follow(kFirst + 500), kFirst - 59500, kFirst + 500);
}

void TestTimeWindow::stretchedWindowKeepsItsStart()
{
    TimeWindow window;
    window.follow(kFirst);
    compare(window.stretch(std::chrono::milliseconds(90000)), kFirst, kFirst + 90000);
    compare(window.follow(kFirst + 89999), kFirst, kFirst + 90000);
    compare(window.follow(kFirst + 90001), kFirst + 1, kFirst + 90001);
}

SCN_TEST(TestTimeWindow, testprogram::NoApplication)
#include "test_timewindow.moc"
