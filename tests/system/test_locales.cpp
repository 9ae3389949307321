#include "support/exportedfile.h"
#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/variable.h"
#include "support/virtualdisplay.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int kWaitMs = 60000;
/// In the first channel's row: the button of its options, and its gain.
constexpr QPoint kOptions(1016, 129);
constexpr QPoint kGain(1240, 129);
/// In its panel: the list of delay modes, and the delay.
constexpr QPoint kDelayMode(1108, 265);
constexpr QPoint kDelay(1185, 265);

QString outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace

/// The program where numbers have a decimal comma.
class TestLocales : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void numbersKeepTheirPoint_data();
    void numbersKeepTheirPoint();

private:
    void key(const char* keys) const;
    void typeNumber(const QPoint& point, const char* number) const;

    VirtualDisplay m_display;
};

void TestLocales::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

void TestLocales::key(const char* keys) const
{
    m_display.xdotool(QStringList{QStringLiteral("key")} +
                      QString::fromLatin1(keys).split(QLatin1Char(' ')));
}

/// Replaces what a field holds.
void TestLocales::typeNumber(const QPoint& point, const char* number) const
{
    m_display.click(point.x(), point.y());
    key("ctrl+a");
    m_display.xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"),
                       QString::fromLatin1(number)});
    key("Return");
}

void TestLocales::numbersKeepTheirPoint_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("decimalPoint");
    QTest::newRow("zh_CN") << QStringLiteral("zh_CN") << QStringLiteral(".");
    QTest::newRow("de_DE") << QStringLiteral("de_DE") << QStringLiteral(",");
    QTest::newRow("C") << QString() << QStringLiteral(".");
}

void TestLocales::numbersKeepTheirPoint()
{
    QFETCH(QString, language);
    QFETCH(QString, decimalPoint);
    const QTemporaryDir locales;
    const Variable path("LOCPATH", locales.path().toLocal8Bit());
    QString name = QStringLiteral("C");
    if (!language.isEmpty()) {
        name = language + QStringLiteral(".UTF-8");
        outputOf(QStringLiteral("localedef"), {QStringLiteral("-i"), language, QStringLiteral("-f"),
                                               QStringLiteral("UTF-8"), locales.filePath(name)});
    }
    const Variable locale("LC_ALL", name.toLatin1());
    QCOMPARE(outputOf(QStringLiteral("locale"), {QStringLiteral("decimal_point")}), decimalPoint);

    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    const auto received = [&instrument](const char* line) {
        return instrument.received().contains(QLatin1String(line));
    };
    m_display.click(kOptions.x(), kOptions.y());
    // Panel and list open within this.
    QTest::qWait(500);
    m_display.click(kDelayMode.x(), kDelayMode.y());
    QTest::qWait(500);
    key("Down Return");
    QTRY_VERIFY_WITH_TIMEOUT(received("ROUT:CHAN:DEL:AUTO OFF,(@101)"), kWaitMs);
    QTest::qWait(500);
    typeNumber(kDelay, "0.25");
    QTRY_COMPARE_WITH_TIMEOUT(instrument.received().filter(QStringLiteral("ROUT:CHAN:DEL 0")),
                              QStringList{QStringLiteral("ROUT:CHAN:DEL 0.25,(@101)")}, kWaitMs);
    // What the decimal key of the numeric keypad types there.
    typeNumber(kDelay, qPrintable(QLatin1Char('1') + decimalPoint + QLatin1Char('5')));
    QTRY_VERIFY_WITH_TIMEOUT(received("ROUT:CHAN:DEL 1.5,(@101)"), kWaitMs);
    key("Escape");
    QTest::qWait(500);
    typeNumber(kGain, "2.5");
    QTRY_VERIFY_WITH_TIMEOUT(received("CALC:SCAL:GAIN 2.5,(@101)"), kWaitMs);

    QVERIFY(user.startScan(instrument));
    user.clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(received("ABOR"), kWaitMs);
    // The drain: a pass that finds no readings and an idle instrument.
    QTRY_VERIFY_WITH_TIMEOUT(instrument.sent().count(QStringLiteral("+256")) >= 2, kWaitMs);
    QVERIFY(ProgramUser::waitForPolls(instrument, 1));
    // A number has no comma: the parts of a command are what they are elsewhere.
    const Readings sent = readingsInReplies(instrument.sent());
    QCOMPARE(sent.keys(), (QList<int>{101, 102, 103, 104}));
    const QDir directory(program.directory());
    QCOMPARE(readingsInStore(directory.filePath(QStringLiteral("MY00000042_Data"))), sent);

    QVERIFY(user.openExportDialog());
    user.clickExportToFile();
    const QStringList csv{QStringLiteral("*.csv")};
    QTRY_COMPARE_WITH_TIMEOUT(directory.entryList(csv).size(), 1, kWaitMs);
    const QString file = directory.filePath(directory.entryList(csv).constFirst());
    constexpr qint64 kEver = 1LL << 52;
    const QStringList all = exportedRows(sent, 0, kEver);
    // It begins with the second that the run began in.
    QTRY_VERIFY_WITH_TIMEOUT(exportedLines(file).size() > 6, kWaitMs);
    const QStringList numbers = exportedLines(file).at(6).split(QLatin1Char(',')).mid(2);
    QCOMPARE(numbers, all.constFirst().split(QLatin1Char(',')).mid(2));
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
    QVERIFY2(program.log().contains(QStringLiteral("仪器已连接")), qPrintable(program.log()));
}

SCN_TEST(TestLocales, QCoreApplication)
#include "test_locales.moc"
