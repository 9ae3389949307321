#include "support/testprogram.h"

#include <QProcess>
#include <QTest>

namespace {

constexpr int kWaitMs = 30000;

} // namespace

/// What ./run refuses, before it installs or builds anything.
class TestRun : public QObject
{
    Q_OBJECT

private slots:
    void refusalIsASentence_data();
    void refusalIsASentence();
};

void TestRun::refusalIsASentence_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("text");
    QTest::newRow("two resources")
        << QStringList{QStringLiteral("ASRL1::INSTR"), QStringLiteral("ASRL2::INSTR")} << 2
        << QStringLiteral("usage: ./run [RESOURCE]");
    QTest::newRow("option") << QStringList{QStringLiteral("--fast")} << 2
                            << QStringLiteral("usage: ./run [RESOURCE]");
    // On an instrument nobody wants a scan that clicks by itself.
    QTest::newRow("resource without a display") << QStringList{QStringLiteral("ASRL1::INSTR")} << 1
                                                << QStringLiteral("There is no display");
}

void TestRun::refusalIsASentence()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, text);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(SCN_SOURCE_DIR "/run"), arguments);
    QVERIFY(process.waitForFinished(kWaitMs));
    QTEST(process.exitCode(), "exitCode");
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    QVERIFY2(errors.contains(text), qPrintable(errors));
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
}

SCN_TEST(TestRun, QCoreApplication)
#include "test_run.moc"
