#include "support/launcherprocess.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "support/virtualdisplay.h"

#include <QProcess>
#include <QTest>

namespace {

constexpr int kWaitMs = 60000;
/// Room for the window at its usual size, twice as large.
constexpr QSize kScreen(3200, 2000);
constexpr QSize kUsualSize(1500, 960);
/// The list of the only channel's functions, in the program's window.
constexpr QPoint kFunction(701, 126);

/// Half a pixel of Qt's becomes a whole one on the screen.
bool isNear(const QPoint& point, const QPointF& wanted)
{
    return qAbs(point.x() - wanted.x()) <= 2 && qAbs(point.y() - wanted.y()) <= 2;
}

} // namespace

/// Launcher and program on a fine screen, and where the user asks Qt for larger windows.
class TestScaleFactors : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void windowsHaveTheirSize_data();
    void windowsHaveTheirSize();

private:
    void setResolution(int dotsPerInch) const;
    QRect placeOfList(qint64 program, double factor) const;
    void placesAreRight(qint64 program, double factor) const;

    VirtualDisplay m_display{0, kScreen};
};

void TestScaleFactors::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

void TestScaleFactors::windowsHaveTheirSize_data()
{
    QTest::addColumn<int>("dotsPerInch");
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::addColumn<double>("factor");
    const QString none;
    const QString screens = QStringLiteral("QT_SCREEN_SCALE_FACTORS");
    const QString all = QStringLiteral("QT_SCALE_FACTOR");
    QTest::newRow("plain") << 96 << none << none << 1.0;
    // What desktops set. The program turns that scaling off.
    QTest::newRow("144-dpi") << 144 << none << none << 1.0;
    QTest::newRow("192-dpi") << 192 << none << none << 1.0;
    QTest::newRow("screen-1.5") << 144 << screens << QStringLiteral("1.5") << 1.0;
    QTest::newRow("screen-2") << 192 << screens << QStringLiteral("2") << 1.0;
    QTest::newRow("automatic") << 192 << QStringLiteral("QT_AUTO_SCREEN_SCALE_FACTOR")
                               << QStringLiteral("1") << 1.0;
    // What a user asks for by hand.
    QTest::newRow("all-1") << 96 << all << QStringLiteral("1") << 1.0;
    QTest::newRow("all-1.5") << 96 << all << QStringLiteral("1.5") << 1.5;
    QTest::newRow("all-2") << 192 << all << QStringLiteral("2") << 2.0;
}

void TestScaleFactors::windowsHaveTheirSize()
{
    QFETCH(int, dotsPerInch);
    QFETCH(QString, variable);
    QFETCH(QString, value);
    QFETCH(double, factor);
    setResolution(dotsPerInch);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:13")});
    LauncherProcess launcher(m_display.name());
    if (!variable.isEmpty()) {
        launcher.setVariable(variable, value);
    }
    launcher.start({instrument.resource()});
    QVERIFY(LauncherProcess::waitForEmbeddingOn(m_display));
    const qulonglong window = LauncherProcess::windowOn(m_display);
    QCOMPARE(m_display.placeOf(window).size(), kUsualSize * factor);
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    placesAreRight(program, factor);
    if (QTest::currentTestFailed()) {
        return;
    }
    // Its popups follow a move.
    m_display.xdotool({QStringLiteral("windowmove"), QStringLiteral("--sync"),
                       QString::number(window), QStringLiteral("40"), QStringLiteral("20")});
    QTRY_COMPARE(m_display.placeOf(window).topLeft(), QPoint(40, 20));
    placesAreRight(program, factor);
}

void TestScaleFactors::setResolution(int dotsPerInch) const
{
    QProcess::execute(QStringLiteral("xprop"),
                      {QStringLiteral("-display"), m_display.name(), QStringLiteral("-root"),
                       QStringLiteral("-f"), QStringLiteral("RESOURCE_MANAGER"),
                       QStringLiteral("8s"), QStringLiteral("-set"),
                       QStringLiteral("RESOURCE_MANAGER"),
                       QStringLiteral("Xft.dpi:\t%1\n").arg(dotsPerInch)});
}

/// Opens the list of functions and closes it. Invalid while it does not open.
QRect TestScaleFactors::placeOfList(qint64 program, double factor) const
{
    const qulonglong window = LauncherProcess::programWindowOn(m_display);
    const QPoint point = m_display.placeOf(window).topLeft() + kFunction * factor;
    m_display.click(point.x(), point.y());
    QTest::qWait(200);
    const qulonglong list = m_display.otherWindowOf(program, window);
    const QRect place = list == 0 ? QRect() : m_display.placeOf(list);
    m_display.xdotool({QStringLiteral("key"), QStringLiteral("Escape")});
    return place;
}

/// The program fills its part of the launcher's window, and its list opens where it does at factor 1.
void TestScaleFactors::placesAreRight(qint64 program, double factor) const
{
    constexpr QRect kProgramPart(0, 27, 1500, 903);
    constexpr QPoint kList(626, 145);
    const QRect launcher = m_display.placeOf(LauncherProcess::windowOn(m_display));
    const QPointF corner = launcher.topLeft() + QPointF(kProgramPart.topLeft()) * factor;
    const QPointF end = corner + QPointF(kProgramPart.width(), kProgramPart.height()) * factor;
    QRect part;
    const auto isInPlace = [&] {
        part = m_display.placeOf(LauncherProcess::programWindowOn(m_display));
        return isNear(part.topLeft(), corner) && isNear(part.bottomRight() + QPoint(1, 1), end);
    };
    QTRY_VERIFY2_WITH_TIMEOUT(isInPlace(), qPrintable(textOf(part)), kWaitMs);
    // The busy overlay covers it for two seconds.
    QRect list;
    const auto hasOpened = [&] {
        // Once it has, it is not opened again: the check asks twice.
        list = list.isValid() ? list : placeOfList(program, factor);
        return list.isValid();
    };
    QTRY_VERIFY_WITH_TIMEOUT(hasOpened(), kWaitMs);
    QVERIFY2(isNear(list.topLeft() - part.topLeft(), QPointF(kList) * factor),
             qPrintable(textOf(list)));
}

SCN_TEST(TestScaleFactors, QCoreApplication)
#include "test_scalefactors.moc"
