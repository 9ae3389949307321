#include "scanbench.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "support/texts.h"

#include <QtTest>

using namespace scn::visa;

namespace {

/// The log lines of these texts, in order.
QStringList among(const LogCapture& log, const QStringList& texts)
{
    QStringList found;
    const QStringList all = log.lines();
    for (const QString& line : all) {
        for (const QString& text : texts) {
            if (line.contains(text)) {
                found.append(line);
            }
        }
    }
    return found;
}

} // namespace

/// What the log says of the instrument and of the run: a launcher reads it there.
class TestLinkLog : public QObject
{
    Q_OBJECT

private slots:
    void identityIsLogged();
    void failedOpenIsLoggedWithItsReason();
    void silenceIsLogged();
    void lossIsLogged();
    void runIsLoggedFromItsStartToItsEnd();
};

void TestLinkLog::identityIsLogged()
{
    const LogCapture log;
    ScanBench bench;
    bench.instrument().setReply(QStringLiteral("*IDN?"), QStringLiteral("SCN,SCN4070A,MY1,1.0"));
    bench.open();
    QCOMPARE(among(log, {QStringLiteral("仪器")}),
             QStringList{QStringLiteral("info: 仪器已连接: SCN SCN4070A MY1 1.0")});
}

void TestLinkLog::failedOpenIsLoggedWithItsReason()
{
    const LogCapture log;
    ScanBench bench;
    bench.instrument().visa().setStatusText(VI_ERROR_RSRC_NFOUND, "VI_ERROR_RSRC_NFOUND: absent");
    bench.instrument().visa().fail(FakeVisa::Operation::Open, VI_ERROR_RSRC_NFOUND);
    bench.open();
    QCOMPARE(
        among(log, {QStringLiteral("仪器")}),
        QStringList{QStringLiteral("warning: 仪器未打开: 连接失败: VI_ERROR_RSRC_NFOUND: absent")});
}

void TestLinkLog::silenceIsLogged()
{
    const LogCapture log;
    ScanBench bench;
    bench.instrument().setSilent(true);
    bench.open();
    QCOMPARE(among(log, {QStringLiteral("仪器")}),
             QStringList{QStringLiteral("warning: 仪器无应答")});
}

void TestLinkLog::lossIsLogged()
{
    ScanBench bench;
    MainWidget& window = bench.open();
    window.show();
    const LogCapture log;
    bench.instrument().setSilent(true);
    window.scanFunc();
    QCOMPARE(among(log, {QStringLiteral("仪器")}),
             QStringList{QStringLiteral("warning: 仪器连接已丢失")});
}

void TestLinkLog::runIsLoggedFromItsStartToItsEnd()
{
    const LogCapture log;
    ScanBench bench;
    bench.run(WindowBench::AcquisitionRuns);
    QCOMPARE(among(log, {QStringLiteral("扫描")}), QStringList{QStringLiteral("info: 扫描开始")});
    QTRY_COMPARE_WITH_TIMEOUT(
        among(log, {QStringLiteral("扫描")}),
        (QStringList{QStringLiteral("info: 扫描开始"), QStringLiteral("info: 扫描结束")}), 10000);
}

SCN_TEST(TestLinkLog, QApplication)
#include "test_linklog.moc"
