#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int kWaitMs = 60000;
/// The demonstration takes some 40 s of its own.
constexpr int kDemoWaitMs = 280000;
constexpr int kQuickStartMs = 5000;

QString source(const char* name)
{
    return QStringLiteral(SCN_SOURCE_DIR "/") + QString::fromLatin1(name);
}

/// Without what tells programs of a display.
QProcessEnvironment noDisplay()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return environment;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The path that the demonstration prints behind a name.
QString named(const QString& name, const QString& output)
{
    const QRegularExpression form(QStringLiteral("^%1: +(\\S+)").arg(name),
                                  QRegularExpression::MultilineOption);
    return form.match(output).captured(1);
}

/// What the sqlite3 program answers on a file.
QString answer(const QString& file, const QString& query)
{
    QProcess sqlite;
    sqlite.start(QStringLiteral("sqlite3"), {QStringLiteral("-readonly"), file, query});
    sqlite.waitForFinished(kWaitMs);
    return QString::fromUtf8(sqlite.readAll()).trimmed();
}

} // namespace

/// What ./run does: its refusals, its demonstration without a display, and how soon it starts.
class TestRun : public QObject
{
    Q_OBJECT

private slots:
    void refusalIsASentence_data();
    void refusalIsASentence();
    void helpIsNoRefusal();
    void missingSudoIsTold();
    void demonstrationLeavesItsResults();
    void demonstrationSparesOtherFolders();
    void secondStartIsQuick();
};

void TestRun::refusalIsASentence_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("wayland");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("text");
    const QStringList resource{QStringLiteral("ASRL1::INSTR")};
    QTest::newRow("two resources")
        << resource + resource << QString() << 2 << QStringLiteral("usage: ./run [RESOURCE]");
    QTest::newRow("option") << QStringList{QStringLiteral("--fast")} << QString() << 2
                            << QStringLiteral("usage: ./run [RESOURCE]");
    // On an instrument nobody wants a scan that clicks by itself.
    QTest::newRow("resource without a display")
        << resource << QString() << 1 << QStringLiteral("There is no display");
    QTest::newRow("Wayland without an X server")
        << QStringList() << QStringLiteral("wayland-0") << 1 << QStringLiteral("xwayland");
}

void TestRun::refusalIsASentence()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, wayland);
    QFETCH(QString, text);
    QProcessEnvironment environment = noDisplay();
    environment.insert(QStringLiteral("WAYLAND_DISPLAY"), wayland);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(source("run"), arguments);
    QVERIFY(process.waitForFinished(kWaitMs));
    QTEST(process.exitCode(), "exitCode");
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    QVERIFY2(errors.contains(text), qPrintable(errors));
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
}

void TestRun::helpIsNoRefusal()
{
    QProcess process;
    process.start(source("run"), {QStringLiteral("--help")});
    QVERIFY(process.waitForFinished(kWaitMs));
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(process.readAllStandardOutput().startsWith("usage: ./run [RESOURCE]"));
    QCOMPARE(process.readAllStandardError(), QByteArray());
}

void TestRun::missingSudoIsTold()
{
    // Somebody who is not root, and the programs that look for what is installed. No apt-get.
    QTemporaryDir programs;
    QFile id(programs.filePath(QStringLiteral("id")));
    QVERIFY(id.open(QIODevice::WriteOnly));
    id.write("#!/bin/sh\necho 1000\n");
    id.close();
    QVERIFY(id.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    for (const char* tool : {"dpkg-query", "grep", "sed"}) {
        const QString name = QString::fromLatin1(tool);
        QVERIFY(QFile::link(QStringLiteral("/usr/bin/") + name, programs.filePath(name)) ||
                QFile::link(QStringLiteral("/bin/") + name, programs.filePath(name)));
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"), programs.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("/bin/bash"),
                  {QStringLiteral("-euc"),
                   QStringLiteral(". \"$0\"; install_packages bash no-such-package"),
                   source("scripts/packages.sh")});
    QVERIFY(process.waitForFinished(kWaitMs));
    QCOMPARE(process.exitCode(), 1);
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(errors.contains("sudo is not installed"), errors.constData());
    QVERIFY2(errors.contains("apt-get install --no-install-recommends no-such-package\n"),
             errors.constData());
}

/// Its clicks go to points of the window, which must be where the controls are.
void TestRun::demonstrationLeavesItsResults()
{
    // A copy of the programs of its own: another test may run those of the build folder.
    QTemporaryDir folder;
    const QDir bin(folder.filePath(QStringLiteral("bin")));
    QVERIFY(QDir().mkpath(bin.path()));
    for (const char* program : {"scn4070a", "scn4070a-launcher", "scn4070a-sim"}) {
        const QString name = QString::fromLatin1(program);
        QVERIFY(QFile::copy(QStringLiteral(SCN_BIN_DIR "/") + name, bin.filePath(name)));
    }
    // What another instrument has left there is no result.
    QVERIFY(bin.mkdir(QStringLiteral("ZZ99_Data")));
    QVERIFY(
        QFile(bin.filePath(QStringLiteral("ZZ99_Data/20260101.db"))).open(QIODevice::WriteOnly));
    const QStringList before = bin.entryList();
    const QString results = folder.filePath(QStringLiteral("results"));
    QProcess demo;
    demo.setProcessEnvironment(noDisplay());
    demo.setProcessChannelMode(QProcess::MergedChannels);
    demo.start(source("scripts/demo.sh"), {bin.path(), results});
    const bool hasEnded = demo.waitForFinished(kDemoWaitMs);
    const QString output = QString::fromUtf8(demo.readAll());
    QVERIFY2(hasEnded && demo.exitCode() == 0, qPrintable(output));

    QCOMPARE(QImage(named(QStringLiteral("screenshot"), output)).size(), QSize(1520, 1000));
    const QByteArray transcript = contentOf(named(QStringLiteral("transcript"), output));
    const int start = transcript.indexOf(" > INIT");
    QVERIFY(start > transcript.indexOf(" > ROUT:SCAN (@101:104)"));
    QVERIFY(transcript.indexOf(" > ABOR", start) > 0);
    // Six lines of facts, then a row for each sweep.
    QVERIFY(contentOf(named(QStringLiteral("CSV file"), output)).count('\n') > 10);
    const QString dayFile = named(QStringLiteral("day file"), output);
    QCOMPARE(answer(dayFile, QStringLiteral("SELECT count(*) FROM curve_info")),
             QStringLiteral("4"));
    QVERIFY(answer(dayFile, QStringLiteral("SELECT count(*) FROM batch_metadata")).toInt() >= 4);
    // What it needs for itself has gone, and the programs' folder is as it was.
    QVERIFY(QDir(results).entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty());
    QVERIFY(!QFile::exists(results + QStringLiteral("/20260101.db")));
    QCOMPARE(bin.entryList(), before);
}

void TestRun::demonstrationSparesOtherFolders()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("thesis.txt"));
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    QProcess demo;
    demo.setProcessEnvironment(noDisplay());
    demo.start(source("scripts/demo.sh"), {QStringLiteral(SCN_BIN_DIR), folder.path()});
    QVERIFY(demo.waitForFinished(kDemoWaitMs));
    QCOMPARE(demo.exitCode(), 1);
    QVERIFY(demo.readAllStandardError().contains("holds something else"));
    QVERIFY(QFile::exists(file));
}

void TestRun::secondStartIsQuick()
{
    // A tree whose build is this test's, which is up to date.
    QTemporaryDir tree;
    QVERIFY(QDir(tree.path()).mkdir(QStringLiteral("build")));
    const QPair<QString, QString> links[] = {
        {QStringLiteral(SCN_BINARY_DIR), QStringLiteral("build/release")},
        {source("build/qdarkstyle"), QStringLiteral("build/qdarkstyle")},
        {source("CMakePresets.json"), QStringLiteral("CMakePresets.json")},
        {source("scripts"), QStringLiteral("scripts")},
    };
    for (const auto& [target, name] : links) {
        QVERIFY(QFile::link(target, tree.filePath(name)));
    }
    QVERIFY(QFile::copy(source("run"), tree.filePath(QStringLiteral("run"))));
    const VirtualDisplay display;
    QVERIFY2(!display.name().isEmpty(), "Xvfb did not start");
    QProcessEnvironment environment = noDisplay();
    environment.insert(QStringLiteral("DISPLAY"), display.name());
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        environment.insert(QString::fromLatin1(variable), tree.path());
    }
    QProcess run;
    run.setProcessEnvironment(environment);
    run.setProcessChannelMode(QProcess::MergedChannels);
    QElapsedTimer elapsed;
    elapsed.start();
    run.start(tree.filePath(QStringLiteral("run")), QStringList());
    const auto windowIsThere = [&display] {
        return !display
                    .xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                              QStringLiteral("--name"), QStringLiteral("^SCN4070A")})
                    .isEmpty();
    };
    const bool isShown = QTest::qWaitFor(windowIsThere, kWaitMs);
    const qint64 startMs = elapsed.elapsed();
    // The shell has become the launcher.
    run.terminate();
    QVERIFY(run.waitForFinished(kWaitMs));
    const QByteArray output = run.readAll();
    qInfo("%lld ms", startMs);
    QVERIFY2(isShown && output.contains("no work to do"), output.constData());
    QVERIFY2(startMs <= kQuickStartMs, qPrintable(QString::number(startMs)));
}

SCN_TEST(TestRun, QCoreApplication)
#include "test_run.moc"
