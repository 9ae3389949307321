#include "app/mainwidget.h"
#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "windowbench.h"

#include <QRegularExpression>
#include <QSet>
#include <QtTest>

namespace {

/// The lines written in these calls, each with the times that its exchanges had, in milliseconds.
QMap<QString, QSet<QString>> timesOf(const QStringList& calls)
{
    static const QRegularExpression time(
        QStringLiteral("^viSetAttribute\\(100, 0x3FFF001A, (\\d+)\\)$"));
    static const QRegularExpression line(QStringLiteral("^viWrite\\(100, \"(.*)\\\\n\"\\)$"));
    QMap<QString, QSet<QString>> times;
    QString last;
    for (const QString& call : calls) {
        if (const auto match = time.match(call); match.hasMatch()) {
            last = match.captured(1);
        } else if (const auto written = line.match(call); written.hasMatch()) {
            times[written.captured(1)].insert(last);
        }
    }
    return times;
}

} // namespace

/// Every exchange of the window has five seconds, whichever page makes it.
class TestExchangeTimeouts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void exchangeHasFiveSeconds_data();
    void exchangeHasFiveSeconds();

private:
    QMap<QString, QSet<QString>> m_times;
};

void TestExchangeTimeouts::initTestCase()
{
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4000A"));
    bench.open();
    bench.tick(101);
    bench.box(101, scn::FunctionColumn)->setCurrentText(QStringLiteral("交流电压"));
    bench.button(QStringLiteral("外部触发时"))->click();
    bench.call("scanFunc");
    m_times = timesOf(bench.instrument().visa().calls());
}

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
    QCOMPARE(m_times.value(line), QSet<QString>{QStringLiteral("5000")});
}

SCN_TEST(TestExchangeTimeouts, QApplication)
#include "test_exchangetimeouts.moc"
