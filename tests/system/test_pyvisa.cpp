#include "support/simulatedinstrument.h"
#include "support/testprogram.h"

#include <QProcess>
#include <QTest>

/// A VISA client other than ours: Debian's PyVISA with its pure Python backend.
class TestPyVisa : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void wholeSession_data();
    void wholeSession();
    void wrongAnswerIsFound();
};

namespace {

/// Runs the session; returns its standard error, empty if all went well.
QString runSession(const QString& resource)
{
    QProcess session;
    session.start(QStringLiteral("/usr/bin/python3"),
                  {QStringLiteral(SCN_SOURCE_DIR "/tests/system/pyvisa_session.py"), resource,
                   QStringLiteral(SCN_SOURCE_DIR "/docs/scpi.md")});
    if (!session.waitForFinished(100000)) {
        return QStringLiteral("it does not end");
    }
    const QString errors = QString::fromUtf8(session.readAllStandardError());
    const bool ended = session.exitStatus() == QProcess::NormalExit && session.exitCode() == 0 &&
                       session.readAllStandardOutput() == "all is well\n";
    return ended ? QString() : QStringLiteral("failed: ") + errors;
}

} // namespace

void TestPyVisa::initTestCase()
{
    if (QProcess::execute(QStringLiteral("/usr/bin/python3"),
                          {QStringLiteral("-c"), QStringLiteral("import pyvisa_py, serial")}) !=
        0) {
        SCN_SKIP(
            QStringLiteral("the packages python3-pyvisa-py and python3-serial are not installed"));
    }
}

void TestPyVisa::wholeSession_data()
{
    QTest::addColumn<SimulatedInstrument::Transport>("transport");
    QTest::newRow("TCP") << SimulatedInstrument::Transport::Tcp;
    QTest::newRow("pseudo-terminal") << SimulatedInstrument::Transport::PseudoTerminal;
}

void TestPyVisa::wholeSession()
{
    QFETCH(SimulatedInstrument::Transport, transport);
    const SimulatedInstrument instrument(transport,
                                         {QStringLiteral("--slots"), QStringLiteral("1:1,2:14")});
    QCOMPARE(runSession(instrument.resource()), QString());
    QVERIFY(instrument.received().size() > 170);
}

void TestPyVisa::wrongAnswerIsFound()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:1,2:14"),
                                          QStringLiteral("--fault"),
                                          QStringLiteral("reject for STR:EXC 12*")});
    QCOMPARE(runSession(instrument.resource()),
             QStringLiteral("failed: STR:EXC: '+5.000000E+00' instead of '+1.200000E+01'\n"));
}

Q_DECLARE_METATYPE(SimulatedInstrument::Transport)

SCN_TEST(TestPyVisa, QCoreApplication)
#include "test_pyvisa.moc"
