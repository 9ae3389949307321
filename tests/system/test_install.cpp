#include "support/privatemounts.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int kWaitMs = 60000;

/// The output of a program that ends by itself.
QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool hasEnded = process.waitForFinished(kWaitMs) && process.exitCode() == 0;
    return hasEnded ? process.readAllStandardOutput() : QByteArray("failed");
}

/// The program files of a process's children, by name.
QStringList childPrograms(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(process));
    QStringList programs;
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& child : file.readAll().simplified().split(' ')) {
            programs.append(
                QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(QString::fromUtf8(child))));
        }
    }
    programs.sort();
    return programs;
}

} // namespace

/// What `cmake --install` puts below a prefix works from there.
class TestInstall : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFileIsInItsPlace();
    void programsTellTheirVersionAndOptions();
    void menuEntryNamesWhatIsInstalled();
    void iconsHaveTheirSizes();
    void manualPagesAreThere_data();
    void manualPagesAreThere();
    void launcherStartsTheInstalledPrograms();
    void readOnlyProgramRunsFromAFolderOfTheUser();

private:
    void expectToRun(const QStringList& programs);
    QString path(const char* name) const { return m_prefix.filePath(QString::fromUtf8(name)); }

    QTemporaryDir m_prefix;
};

void TestInstall::initTestCase()
{
    const QByteArray output = outputOf(QStringLiteral(SCN_CMAKE),
                                       {QStringLiteral("--install"), QStringLiteral(SCN_BINARY_DIR),
                                        QStringLiteral("--prefix"), m_prefix.path()});
    QVERIFY2(output != "failed", "cmake --install failed");
}

void TestInstall::everyFileIsInItsPlace()
{
    QStringList files;
    QDirIterator walk(m_prefix.path(), QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        files.append(QDir(m_prefix.path()).relativeFilePath(walk.next()));
    }
    files = files.filter(QRegularExpression(QStringLiteral("^(?!share/(icons|man)/)")));
    files.sort();
    const QStringList wanted{
        QStringLiteral("bin/scn4070a-launcher"),
        QStringLiteral("bin/scn4070a-sim"),
        QStringLiteral("bin/scn4070a-store"),
        QStringLiteral("lib/scn4070a/scn4070a"),
        QStringLiteral("lib/udev/rules.d/70-scn4070a.rules"),
        QStringLiteral("share/applications/scn4070a.desktop"),
        QStringLiteral("share/bash-completion/completions/scn4070a-store"),
        QStringLiteral("share/doc/scn4070a/changelog.gz"),
        QStringLiteral("share/doc/scn4070a/copyright"),
        QStringLiteral("share/doc/scn4070a/fleet.md"),
        QStringLiteral("share/doc/scn4070a/plot-example.png"),
        QStringLiteral("share/doc/scn4070a/storetool.md"),
    };
    QCOMPARE(files, wanted);
}

void TestInstall::programsTellTheirVersionAndOptions()
{
    const QString launcher = path("bin/scn4070a-launcher");
    QCOMPARE(outputOf(launcher, {QStringLiteral("--version")}),
             QByteArray("scn4070a-launcher " SCN_VERSION "\n"));
    QVERIFY(outputOf(launcher, {QStringLiteral("--help")}).contains("--simulator"));
    QVERIFY(outputOf(path("bin/scn4070a-sim"), {QStringLiteral("--help")}).contains("--pty"));
    QCOMPARE(outputOf(path("bin/scn4070a-store"), {QStringLiteral("--version")}),
             QByteArray("scn4070a-store " SCN_VERSION "\n"));
}

void TestInstall::menuEntryNamesWhatIsInstalled()
{
    QSettings entry(path("share/applications/scn4070a.desktop"), QSettings::IniFormat);
    entry.setIniCodec("UTF-8");
    entry.beginGroup(QStringLiteral("Desktop Entry"));
    QCOMPARE(entry.value(QStringLiteral("Type")).toString(), QStringLiteral("Application"));
    QCOMPARE(entry.value(QStringLiteral("Name")).toString(), QStringLiteral("SCN4070A Control"));
    QCOMPARE(entry.value(QStringLiteral("Name[zh_CN]")).toString(),
             QStringLiteral("SCN4070A 控制软件"));
    const QString program = entry.value(QStringLiteral("Exec")).toString();
    QVERIFY(QFileInfo(m_prefix.filePath(QStringLiteral("bin/") + program)).isExecutable());
    QCOMPARE(entry.value(QStringLiteral("Icon")).toString(), QStringLiteral("scn4070a"));
}

void TestInstall::iconsHaveTheirSizes()
{
    const QDir icons(path("share/icons/hicolor"));
    QCOMPARE(icons.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 8);
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString file = icons.filePath(QStringLiteral("%1x%1/apps/scn4070a.png").arg(size));
        QCOMPARE(QImage(file).size(), QSize(size, size));
    }
    QVERIFY(QFile::exists(icons.filePath(QStringLiteral("scalable/apps/scn4070a.svg"))));
}

void TestInstall::manualPagesAreThere_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"scn4070a-launcher", "scn4070a", "scn4070a-sim", "scn4070a-store"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
}

void TestInstall::manualPagesAreThere()
{
    QFETCH(QString, name);
    const QByteArray page =
        outputOf(QStringLiteral("gzip"),
                 {QStringLiteral("-dc"),
                  m_prefix.filePath(QStringLiteral("share/man/man1/%1.1.gz").arg(name))});
    QVERIFY(page.contains("control " SCN_VERSION "\""));
    // Nothing is left that the build had to fill in.
    static const QRegularExpression unfilled(QStringLiteral("@\\w+@"));
    QVERIFY(!QString::fromUtf8(page).contains(unfilled));
    QVERIFY(page.contains(".SH NAME\n" + name.toUtf8().replace("-", "\\-") + " \\- "));
}

/// Starts the installed launcher on a simulated instrument; its children are to be these programs.
void TestInstall::expectToRun(const QStringList& programs)
{
    const VirtualDisplay display;
    QVERIFY2(!display.name().isEmpty(), "Xvfb did not start");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), display.name());
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), path("data"));
    QProcess launcher;
    launcher.setProcessEnvironment(environment);
    launcher.start(path("bin/scn4070a-launcher"),
                   {QStringLiteral("--simulator"), path("bin/scn4070a-sim"),
                    QStringLiteral("--slots"), QStringLiteral("1:13")});
    QVERIFY(launcher.waitForStarted());
    QTRY_COMPARE_WITH_TIMEOUT(childPrograms(launcher.processId()), programs, kWaitMs);
    const auto windowIsThere = [&display] {
        return !display
                    .xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                              QStringLiteral("--name"), QStringLiteral("^SCN4070A 控制软件$")})
                    .isEmpty();
    };
    QTRY_VERIFY_WITH_TIMEOUT(windowIsThere(), kWaitMs);
    launcher.terminate();
    QVERIFY(launcher.waitForFinished(kWaitMs));
}

void TestInstall::launcherStartsTheInstalledPrograms()
{
    expectToRun({path("bin/scn4070a-sim"), path("lib/scn4070a/scn4070a")});
}

void TestInstall::readOnlyProgramRunsFromAFolderOfTheUser()
{
    const auto mount = privatemounts::Mount::readOnly(path("lib"));
    QVERIFY(mount.isMounted());
    expectToRun({path("bin/scn4070a-sim"), path("data/scn4070a/simulator/scn4070a")});
}

SCN_TEST_RUN(&privatemounts::run<TestInstall, QGuiApplication>)
#include "test_install.moc"
