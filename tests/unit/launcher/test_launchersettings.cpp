#include "launcher/launchersettings.h"
#include "support/testprogram.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace scnlauncher;

/// What the launcher remembers from one start to the next.
class TestLauncherSettings : public QObject
{
    Q_OBJECT

private slots:
    void fileIsInTheConfigurationFolder();
    void nothingIsRememberedAtFirst();
    void newestResourceComesFirstAndOnce();
    void oldestResourceGoes();
    void geometryIsKept();
    void eachLineKeepsItsRate();
    void forgottenResourceIsGone();
    void runLimitsAreKept();
};

void TestLauncherSettings::fileIsInTheConfigurationFolder()
{
    qputenv("XDG_CONFIG_HOME", "/config");
    QCOMPARE(LauncherSettings::path(), QStringLiteral("/config/scn4070a/launcher.ini"));
}

void TestLauncherSettings::nothingIsRememberedAtFirst()
{
    const QTemporaryDir directory;
    const LauncherSettings settings(directory.filePath(QStringLiteral("a.ini")));
    QCOMPARE(settings.recentResources(), QStringList());
    QCOMPARE(settings.geometry(), QByteArray());
    QCOMPARE(settings.serialRate(QStringLiteral("ASRL1::INSTR")), 0);
    QVERIFY(settings.runLimits().areOff());
}

void TestLauncherSettings::newestResourceComesFirstAndOnce()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.ini"));
    const LauncherSettings settings(file);
    for (const char* resource : {"a", "b", "a"}) {
        settings.remember({QString::fromLatin1(resource), false, 0});
    }
    QCOMPARE(LauncherSettings(file).recentResources(),
             (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

void TestLauncherSettings::oldestResourceGoes()
{
    const QTemporaryDir directory;
    const LauncherSettings settings(directory.filePath(QStringLiteral("a.ini")));
    for (int resource = 0; resource < 10; ++resource) {
        settings.remember({QString::number(resource), false, 0});
    }
    QCOMPARE(settings.recentResources().size(), 8);
    QCOMPARE(settings.recentResources().constLast(), QStringLiteral("2"));
}

void TestLauncherSettings::geometryIsKept()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.ini"));
    LauncherSettings(file).setGeometry("place");
    QCOMPARE(LauncherSettings(file).geometry(), QByteArray("place"));
}

void TestLauncherSettings::eachLineKeepsItsRate()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.ini"));
    const QString first = QStringLiteral("ASRL/dev/ttyUSB0::INSTR");
    const QString second = QStringLiteral("ASRL/dev/ttyUSB1::INSTR");
    LauncherSettings(file).remember({first, false, 9600});
    LauncherSettings(file).remember({second, false, 57600});
    QCOMPARE(LauncherSettings(file).serialRate(first), 9600);
    QCOMPARE(LauncherSettings(file).serialRate(second), 57600);
}

void TestLauncherSettings::forgottenResourceIsGone()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.ini"));
    const QString port = QStringLiteral("ASRL/dev/ttyUSB0::INSTR");
    LauncherSettings(file).remember({port, false, 9600});
    LauncherSettings(file).remember({QStringLiteral("other"), false, 0});
    LauncherSettings(file).forget(port);
    QCOMPARE(LauncherSettings(file).recentResources(), QStringList{QStringLiteral("other")});
    QCOMPARE(LauncherSettings(file).serialRate(port), 0);
}

void TestLauncherSettings::runLimitsAreKept()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.ini"));
    LauncherSettings(file).setRunLimits({1, 2, 3});
    const RunLimits limits = LauncherSettings(file).runLimits();
    QCOMPARE(limits.days, 1);
    QCOMPARE(limits.runs, 2);
    QCOMPARE(limits.megabytes, 3);
}

SCN_TEST(TestLauncherSettings, QCoreApplication)
#include "test_launchersettings.moc"
