#include "app/mainwidget.h"
#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "windowbench.h"

#include <QRegularExpression>
#include <QtTest>

namespace {

/// The lines written in these calls, each with the time that its exchange had, in milliseconds.
QMap<QString, QString> timesOf(const QStringList& calls)
{
    static const QRegularExpression time(
        QStringLiteral("^viSetAttribute\\(100, 0x3FFF001A, (\\d+)\\)$"));
    static const QRegularExpression line(QStringLiteral("^viWrite\\(100, \"(.*)\\\\n\"\\)$"));
    QMap<QString, QString> times;
    QString last;
    for (const QString& call : calls) {
        if (const auto match = time.match(call); match.hasMatch()) {
            last = match.captured(1);
        } else if (const auto written = line.match(call); written.hasMatch()) {
            times.insert(written.captured(1), last);
        }
    }
    return times;
}

} // namespace

/// Each exchange of the window has five seconds, whichever of its pages asks.
class TestExchangeTimeouts : public QObject
{
    Q_OBJECT

private slots:
    void exchangeHasFiveSeconds_data();
    void exchangeHasFiveSeconds();
};

void TestExchangeTimeouts::exchangeHasFiveSeconds_data()
{
    QTest::addColumn<QString>("line");
    for (const char* line : {"*IDN?", "SYST:CTYP? 1", "FUNC? (@101)", "TRIG:SOUR?",
                             "VOLT:DC:NPLC? (@101)", "CALC:SCAL:GAIN? (@102)", "ROUT:SCAN (@101)",
                             "SYST:ERR?", "FUNC \"VOLT:AC\",(@101)", "TRIG:SOUR EXT", "INIT"}) {
        QTest::newRow(line) << QString::fromLatin1(line);
    }
}

void TestExchangeTimeouts::exchangeHasFiveSeconds()
{
    QFETCH(QString, line);
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4000A"));
    bench.open();
    bench.tick(101);
    bench.box(101, FunctionColumn)->setCurrentText(QStringLiteral("交流电压"));
    bench.button(QStringLiteral("外部触发时"))->click();
    if (line == QLatin1String("INIT")) {
        bench.call("scanFunc");
    }
    const auto times = timesOf(bench.instrument().visa().calls());
    QCOMPARE(times.value(line), QStringLiteral("5000"));
}

SCN_TEST(TestExchangeTimeouts, QApplication)
#include "test_exchangetimeouts.moc"
