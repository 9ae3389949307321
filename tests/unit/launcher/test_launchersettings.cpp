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
    void geometryAndRateAreKept();
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
    QCOMPARE(settings.serialRate(), 0);
    QVERIFY(settings.runLimits().areOff());
}

void TestLauncherSettings::newestResourceComesFirstAndOnce()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.ini"));
    const LauncherSettings settings(file);
    for (const char* resource : {"a", "b", "a"}) {
        settings.addRecentResource(QString::fromLatin1(resource));
    }
    QCOMPARE(LauncherSettings(file).recentResources(),
             (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

void TestLauncherSettings::oldestResourceGoes()
{
    const QTemporaryDir directory;
    const LauncherSettings settings(directory.filePath(QStringLiteral("a.ini")));
    for (int resource = 0; resource < 10; ++resource) {
        settings.addRecentResource(QString::number(resource));
    }
    QCOMPARE(settings.recentResources().size(), 8);
    QCOMPARE(settings.recentResources().constLast(), QStringLiteral("2"));
}

void TestLauncherSettings::geometryAndRateAreKept()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("a.ini"));
    LauncherSettings(file).setGeometry("place");
    LauncherSettings(file).setSerialRate(9600);
    QCOMPARE(LauncherSettings(file).geometry(), QByteArray("place"));
    QCOMPARE(LauncherSettings(file).serialRate(), 9600);
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
