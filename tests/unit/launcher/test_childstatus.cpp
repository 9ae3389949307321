#include "launcher/childstatus.h"
#include "support/testprogram.h"

#include <QtTest>

using namespace scnlauncher;

Q_DECLARE_METATYPE(scnlauncher::OpenFailure)

namespace {

QString logged(const char* level, const QString& text)
{
    return QStringLiteral("2024-01-02 03:04:05.678 ") + QLatin1String(level) + QLatin1Char(' ') +
           text;
}

const QString kIdentityLine = logged("info", QStringLiteral("仪器已连接: SCN SCN4070A MY1 1.0"));

} // namespace

/// What the launcher knows of a child, from the child's log.
class TestChildStatus : public QObject
{
    Q_OBJECT

private slots:
    void identityConnects();
    void foreignLinesChangeNothing();
    void failureIsToldApart_data();
    void failureIsToldApart();
    void everyFailureHasItsSentence();
    void otherKindIsNoticed();
    void lossKeepsTheIdentityAndTheScan();
    void lossBehindAFailureKeepsTheFailure();
    void scanBeginsAndEnds();
    void lastCriticalLineIsKept();
};

void TestChildStatus::identityConnects()
{
    ChildStatus status;
    QCOMPARE(status.link(), ChildStatus::Link::Connecting);
    QVERIFY(status.take(kIdentityLine));
    QCOMPARE(status.link(), ChildStatus::Link::Connected);
    QCOMPARE(status.identity(), QStringLiteral("SCN SCN4070A MY1 1.0"));
    QVERIFY(!status.isOtherKind());
}

void TestChildStatus::foreignLinesChangeNothing()
{
    ChildStatus status;
    for (const QString& line : {QString(), QStringLiteral("plain"),
                                logged("warning", QStringLiteral("无效的数据记录，跳过解析")),
                                logged("info", QStringLiteral("说 仪器已连接: x"))}) {
        QVERIFY(!status.take(line));
    }
    QCOMPARE(status.link(), ChildStatus::Link::Connecting);
}

void TestChildStatus::failureIsToldApart_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<OpenFailure>("failure");
    const QString open = QStringLiteral("仪器未打开: 连接失败: ");
    QTest::newRow("absent") << open + QStringLiteral("VI_ERROR_RSRC_NFOUND: x")
                            << OpenFailure::NoSuchResource;
    QTest::newRow("rights") << open + QStringLiteral("VI_ERROR_NPERMISSION: x")
                            << OpenFailure::NoRights;
    QTest::newRow("time-out") << open + QStringLiteral("VI_ERROR_TMO: x") << OpenFailure::NoAnswer;
    QTest::newRow("busy") << open + QStringLiteral("VI_ERROR_RSRC_BUSY: x") << OpenFailure::Busy;
    QTest::newRow("locked") << open + QStringLiteral("VI_ERROR_RSRC_LOCKED: x")
                            << OpenFailure::Busy;
    QTest::newRow("name") << open + QStringLiteral("VI_ERROR_INV_RSRC_NAME: x")
                          << OpenFailure::Malformed;
    QTest::newRow("something else")
        << open + QStringLiteral("VI_ERROR_IO: x") << OpenFailure::Other;
    QTest::newRow("silence") << QStringLiteral("仪器无应答") << OpenFailure::NoAnswer;
}

void TestChildStatus::failureIsToldApart()
{
    QFETCH(QString, text);
    QFETCH(OpenFailure, failure);
    ChildStatus status;
    QVERIFY(status.take(logged("warning", text)));
    QCOMPARE(status.link(), ChildStatus::Link::Failed);
    QCOMPARE(status.failure(), failure);
    // A later search may find it.
    QVERIFY(status.take(kIdentityLine));
    QCOMPARE(status.failure(), OpenFailure::None);
    QCOMPARE(status.failureText(), QString());
}

void TestChildStatus::everyFailureHasItsSentence()
{
    QStringList sentences;
    for (const OpenFailure failure :
         {OpenFailure::NoSuchResource, OpenFailure::Refused, OpenFailure::NoRights,
          OpenFailure::NoAnswer, OpenFailure::Busy, OpenFailure::Malformed, OpenFailure::Other}) {
        sentences.append(failureSentence(failure, QStringLiteral("TCPIP0::host::1::SOCKET")));
    }
    for (const QString& sentence : qAsConst(sentences)) {
        // It says what to do.
        QVERIFY2(sentence.contains(QStringLiteral("请")), qPrintable(sentence));
    }
    QCOMPARE(sentences.removeDuplicates(), 0);
    const QString rate = QStringLiteral("波特率");
    QVERIFY(failureSentence(OpenFailure::NoAnswer, QStringLiteral("ASRL1::INSTR")).contains(rate));
    QVERIFY(!sentences.join(QString()).contains(rate));
}

void TestChildStatus::otherKindIsNoticed()
{
    ChildStatus status;
    QVERIFY(!status.isOtherKind());
    status.take(logged("info", QStringLiteral("仪器已连接: MAKER METER 1 2")));
    QVERIFY(status.isOtherKind());
}

void TestChildStatus::lossKeepsTheIdentityAndTheScan()
{
    ChildStatus status;
    status.take(kIdentityLine);
    status.take(logged("info", QStringLiteral("扫描开始")));
    QVERIFY(status.take(logged("warning", QStringLiteral("仪器连接已丢失"))));
    QCOMPARE(status.link(), ChildStatus::Link::Lost);
    QVERIFY(!status.identity().isEmpty());
    QVERIFY(status.isScanning());
}

void TestChildStatus::lossBehindAFailureKeepsTheFailure()
{
    ChildStatus status;
    status.take(logged("warning", QStringLiteral("仪器无应答")));
    status.take(logged("warning", QStringLiteral("仪器连接已丢失")));
    QCOMPARE(status.link(), ChildStatus::Link::Failed);
    QCOMPARE(status.failure(), OpenFailure::NoAnswer);
}

void TestChildStatus::scanBeginsAndEnds()
{
    ChildStatus status;
    QVERIFY(status.take(logged("info", QStringLiteral("扫描开始"))));
    QVERIFY(status.isScanning());
    QVERIFY(status.take(logged("info", QStringLiteral("扫描结束"))));
    QVERIFY(!status.isScanning());
}

void TestChildStatus::lastCriticalLineIsKept()
{
    ChildStatus status;
    status.take(logged("critical", QStringLiteral("first")));
    status.take(logged("critical", QStringLiteral("second")));
    status.take(logged("warning", QStringLiteral("third")));
    QCOMPARE(status.lastCritical(), QStringLiteral("second"));
}

SCN_TEST(TestChildStatus, QCoreApplication)
#include "test_childstatus.moc"
