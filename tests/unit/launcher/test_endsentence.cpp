#include "launcher/endsentence.h"
#include "launcher/scanquestion.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>

using namespace scnlauncher;

namespace {

const QString kProgram = QStringLiteral("/opt/scn4070a");
const QString kGoesOn = QStringLiteral("会继续扫描");
const QString kStops = QStringLiteral("重新启动会停止扫描");

} // namespace

/// What a user is told of a scan whose program ends.
class TestEndSentence : public QObject
{
    Q_OBJECT

private slots:
    void crashWarnsOfTheRestart();
    void simulatedInstrumentEndsToo();
    void programThatDidNotStartHasNoScan();
    void questionFitsTheInstrument();
};

void TestEndSentence::crashWarnsOfTheRestart()
{
    for (const bool hasCrashed : {true, false}) {
        const QString text =
            endSentence({false, true, hasCrashed, 6}, kProgram, AfterEnd::ScanGoesOn);
        QVERIFY2(text.contains(kGoesOn) && text.contains(kStops), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral(" 6），请查看日志")), qPrintable(text));
    }
}

void TestEndSentence::simulatedInstrumentEndsToo()
{
    const QString text = endSentence({false, true, true, 9}, kProgram, AfterEnd::ScanEnds);
    QVERIFY2(text.contains(QStringLiteral("模拟仪器")) && !text.contains(kGoesOn),
             qPrintable(text));
}

void TestEndSentence::programThatDidNotStartHasNoScan()
{
    const QString text = endSentence({false, false, false, -1}, kProgram, AfterEnd::ScanGoesOn);
    QVERIFY2(text.contains(kProgram) && !text.contains(kGoesOn), qPrintable(text));
}

void TestEndSentence::questionFitsTheInstrument()
{
    for (const AfterEnd afterEnd : {AfterEnd::ScanGoesOn, AfterEnd::ScanEnds}) {
        QWidget window;
        askToLeaveScan(&window, afterEnd, [] {});
        const auto* box = window.findChild<QMessageBox*>();
        QCOMPARE(box->text().contains(kGoesOn), afterEnd == AfterEnd::ScanGoesOn);
    }
}

SCN_TEST(TestEndSentence, QApplication)
#include "test_endsentence.moc"
