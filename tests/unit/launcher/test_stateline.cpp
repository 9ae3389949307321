#include "common/textresolution.h"
#include "launcher/look.h"
#include "launcher/stateline.h"
#include "support/testprogram.h"
#include "widgets/pathlabel.h"

#include <QApplication>
#include <QLabel>
#include <QTest>

#include <memory>

Q_DECLARE_METATYPE(scnlauncher::OpenFailure)

using namespace scnlauncher;
using namespace std::chrono_literals;

namespace {

constexpr int kSmallScreen = 1280;
const QString kUsb = QStringLiteral("USB0::0x049F::0x606E::MY1234567890::INSTR");
const QString kIdentity = QStringLiteral("SCN SCN4070A MY1234567890 A.03.02-01.21");
const QString kCritical = QStringLiteral(
    "写入失败，读数未保存: database or disk is full, Unable to fetch row, 2026_11_22.db");
const QString kFolder = QStringLiteral("/home/researcher/.local/share/scn4070a/USB0-0x049F-0x606E");

ChildStatus statusAfter(const QStringList& lines)
{
    ChildStatus status;
    for (const QString& line : lines) {
        status.take(QStringLiteral("2026-11-22 10:00:00.000 ") + line);
    }
    return status;
}

ChildStatus scanningWithAFault()
{
    return statusAfter({QStringLiteral("info 仪器已连接: ") + kIdentity,
                        QStringLiteral("info 扫描开始"), QStringLiteral("critical ") + kCritical});
}

/// Texts as large as in the launcher.
class LauncherApplication
{
public:
    LauncherApplication(int& argc, char** argv)
    {
        scn::assumeResolution();
        m_application = std::make_unique<QApplication>(argc, argv);
        applyLook();
    }

private:
    std::unique_ptr<QApplication> m_application;
};

} // namespace

/// The line below the program's window on screens of any width.
class TestStateLine : public QObject
{
    Q_OBJECT

private slots:
    void sentencesAreWholeOnASmallScreen_data();
    void sentencesAreWholeOnASmallScreen();
    void everyTextShowsBesideACriticalLine();
    void narrowLineKeepsTheState();
    void faultSaysWhatToDo_data();
    void faultSaysWhatToDo();
    void serialRateIsShown();
    void cutTextIsInTheToolTip();
    void timesHaveUnits_data();
    void timesHaveUnits();

private:
    static void show(StateLine& line, int width);
    static const scn::PathLabel* text(const StateLine& line, const char* name);
};

void TestStateLine::show(StateLine& line, int width)
{
    line.resize(width, StateLine::kHeight);
    line.show();
    QVERIFY(QTest::qWaitForWindowExposed(&line));
}

const scn::PathLabel* TestStateLine::text(const StateLine& line, const char* name)
{
    return line.findChild<scn::PathLabel*>(QLatin1String(name));
}

void TestStateLine::sentencesAreWholeOnASmallScreen_data()
{
    QTest::addColumn<QString>("resource");
    QTest::addColumn<QString>("log");
    QTest::addColumn<OpenFailure>("failure");
    const QString failed = QStringLiteral("warning 仪器未打开: 连接失败: x");
    QTest::newRow("malformed") << QStringLiteral("a resource that is nothing of the kind at all")
                               << failed << OpenFailure::Malformed;
    QTest::newRow("no such resource") << kUsb << failed << OpenFailure::NoSuchResource;
    QTest::newRow("refused") << QStringLiteral("TCPIP0::[2001:db8:1234:5678::5]::5025::SOCKET")
                             << failed << OpenFailure::Refused;
    QTest::newRow("no answer") << QStringLiteral("ASRL/dev/serial/by-id/usb-Maker_Adapter::INSTR")
                               << failed << OpenFailure::NoAnswer;
    QTest::newRow("rights") << QStringLiteral("ASRL/dev/ttyUSB0::INSTR") << failed
                            << OpenFailure::NoRights;
}

void TestStateLine::sentencesAreWholeOnASmallScreen()
{
    QFETCH(QString, resource);
    QFETCH(QString, log);
    QFETCH(OpenFailure, failure);
    StateLine line(nullptr);
    line.showStatus(resource, statusAfter({log}), failure);
    line.showFolder(kFolder);
    line.showSilence(9999s);
    show(line, kSmallScreen);
    const scn::PathLabel* state = text(line, "state");
    QVERIFY2(state->width() >= state->sizeHint().width(), qPrintable(state->text()));
    QVERIFY(text(line, "resourceLabel")->isVisible());
}

void TestStateLine::everyTextShowsBesideACriticalLine()
{
    StateLine line(nullptr);
    line.showStatus(kUsb, scanningWithAFault(), OpenFailure::None);
    line.showFolder(kFolder);
    line.showSilence(9999s);
    show(line, kSmallScreen);
    // When that was is a hover away.
    QCOMPARE(text(line, "critical")->toolTip(), QStringLiteral("2026-11-22 10:00:00 ") + kCritical);
    // Who it is and how it is can be read to the end.
    for (const char* name : {"identity", "state"}) {
        const scn::PathLabel* label = text(line, name);
        QVERIFY2(label->width() >= label->sizeHint().width(), name);
    }
    int right = -1;
    for (const char* name : {"resourceLabel", "identity", "state", "critical", "folder"}) {
        const scn::PathLabel* label = text(line, name);
        QVERIFY2(label->isVisible(), name);
        QVERIFY2(label->geometry().left() > right, name);
        right = label->geometry().right();
    }
    QVERIFY(right < text(line, "state")->parentWidget()->width());
}

void TestStateLine::narrowLineKeepsTheState()
{
    StateLine line(nullptr);
    line.showStatus(kUsb, scanningWithAFault(), OpenFailure::None);
    line.showFolder(kFolder);
    line.showSilence(9999s);
    show(line, 560);
    // It does not widen the window.
    QCOMPARE(line.width(), 560);
    const scn::PathLabel* state = text(line, "state");
    QVERIFY(state->isVisible());
    QVERIFY(state->width() >= state->sizeHint().width());
    // What goes first comes back with the room.
    QVERIFY(!text(line, "folder")->isVisible());
    line.resize(1920, StateLine::kHeight);
    QTRY_VERIFY(text(line, "folder")->isVisible());
}

void TestStateLine::faultSaysWhatToDo_data()
{
    QTest::addColumn<QStringList>("log");
    QTest::addColumn<QString>("text");
    QTest::newRow("lost") << QStringList{QStringLiteral("info 仪器已连接: ") + kIdentity,
                                         QStringLiteral("warning 仪器连接已丢失")}
                          << QStringLiteral("请检查电缆和电源");
    QTest::newRow("another kind") << QStringList{QStringLiteral("info 仪器已连接: M X 1 2")}
                                  << QStringLiteral("请选择其他仪器");
}

void TestStateLine::faultSaysWhatToDo()
{
    QFETCH(QStringList, log);
    QFETCH(QString, text);
    StateLine line(nullptr);
    line.showStatus(kUsb, statusAfter(log), OpenFailure::None);
    QVERIFY2(this->text(line, "state")->text().contains(text),
             qPrintable(this->text(line, "state")->text()));
    QCOMPARE(this->text(line, "state")->property("trouble").toBool(), true);
}

void TestStateLine::serialRateIsShown()
{
    StateLine line(nullptr);
    line.showStatus(QStringLiteral("ASRL1::INSTR"), ChildStatus(), OpenFailure::None);
    line.showSerialRate(9600);
    show(line, kSmallScreen);
    QCOMPARE(text(line, "serialRate")->text(), QStringLiteral("9600 波特"));
    QVERIFY(text(line, "serialRate")->isVisible());
    line.showSerialRate(0);
    QVERIFY(!text(line, "serialRate")->isVisible());
}

void TestStateLine::cutTextIsInTheToolTip()
{
    StateLine line(nullptr);
    line.showStatus(
        QStringLiteral("ASRL1::INSTR"),
        statusAfter({QStringLiteral("warning 仪器未打开: 连接失败: VI_ERROR_TMO (0xBFFF0015)")}),
        OpenFailure::NoAnswer);
    QVERIFY(text(line, "state")->toolTip().contains(QStringLiteral("没有应答")));
    QVERIFY(text(line, "state")->toolTip().contains(QStringLiteral("VI_ERROR_TMO")));
}

void TestStateLine::timesHaveUnits_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("seconds") << qint64(59) << QStringLiteral("上次日志 59 秒前");
    QTest::newRow("a minute") << qint64(60) << QStringLiteral("上次日志 1 分钟前");
    QTest::newRow("minutes") << qint64(3599) << QStringLiteral("上次日志 59 分钟前");
    QTest::newRow("an hour") << qint64(3600) << QStringLiteral("上次日志 1 小时前");
    QTest::newRow("hours") << qint64(86399) << QStringLiteral("上次日志 23 小时前");
    QTest::newRow("a week") << qint64(604800) << QStringLiteral("上次日志 7 天前");
}

void TestStateLine::timesHaveUnits()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, text);
    StateLine line(nullptr);
    line.showSilence(std::chrono::seconds(seconds));
    QCOMPARE(line.findChild<QLabel*>(QStringLiteral("silence"))->text(), text);
}

SCN_TEST(TestStateLine, LauncherApplication)
#include "test_stateline.moc"
