#include "launcher/simulatorprocess.h"
#include "support/testprogram.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace scnlauncher;

namespace {

constexpr int kWaitMs = 20000;

/// A program that stands in for the simulator.
QString standIn(const QTemporaryDir& directory, const QByteArray& script)
{
    QFile file(directory.filePath(QStringLiteral("simulator")));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("#!/bin/sh\n" + script);
    }
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return file.fileName();
}

} // namespace

/// The simulator as the launcher's process.
class TestSimulatorProcess : public QObject
{
    Q_OBJECT

private slots:
    void readyTellsTheResource();
    void endlessLineIsTold();
};

void TestSimulatorProcess::readyTellsTheResource()
{
    const QTemporaryDir directory;
    SimulatorProcess simulator(nullptr);
    const QSignalSpy ready(&simulator, &SimulatorProcess::ready);
    const QSignalSpy failed(&simulator, &SimulatorProcess::failed);
    simulator.start(standIn(directory, "echo READY a resource\necho more\nexec sleep 1000\n"), {});
    QTRY_COMPARE_WITH_TIMEOUT(ready.size(), 1, kWaitMs);
    QCOMPARE(ready.at(0).at(0).toString(), QStringLiteral("a resource"));
    QCOMPARE(failed.size(), 0);
}

void TestSimulatorProcess::endlessLineIsTold()
{
    const QTemporaryDir directory;
    SimulatorProcess simulator(nullptr);
    const QSignalSpy failed(&simulator, &SimulatorProcess::failed);
    simulator.start(standIn(directory, "head -c 1000000 /dev/zero | tr '\\0' x\nexec sleep 1000\n"),
                    {});
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, kWaitMs);
    const QString reason = failed.at(0).at(0).toString();
    QVERIFY2(reason.contains(QStringLiteral("无法识别：xxx")) && reason.size() < 200,
             qPrintable(reason));
}

SCN_TEST(TestSimulatorProcess, QCoreApplication)
#include "test_simulatorprocess.moc"
