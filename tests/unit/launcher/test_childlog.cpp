#include "launcher/childlog.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace scnlauncher;

namespace {

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// The log file of a child, which never grows without bounds.
class TestChildLog : public QObject
{
    Q_OBJECT

private slots:
    void linesAreThereAtOnce();
    void secondLogGoesOnBehindTheFirst();
    void fullFileIsRotatedAndTheOldestGoes();
    void folderThatCannotBeMadeIsReported();
    void resourceNamesItsFile();
};

void TestChildLog::linesAreThereAtOnce()
{
    const QTemporaryDir directory;
    ChildLog log(directory.filePath(QStringLiteral("made/on/demand/a.log")));
    QVERIFY(!QFile::exists(log.path()));
    QVERIFY(log.write("one"));
    QVERIFY(log.write("two"));
    QCOMPARE(bytesOf(log.path()), QByteArray("one\ntwo\n"));
}

void TestChildLog::secondLogGoesOnBehindTheFirst()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("a.log"));
    QVERIFY(ChildLog(path).write("one"));
    QVERIFY(ChildLog(path).write("two"));
    QCOMPARE(bytesOf(path), QByteArray("one\ntwo\n"));
}

void TestChildLog::fullFileIsRotatedAndTheOldestGoes()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("a.log"));
    ChildLog::Limits limits;
    limits.bytes = 10;
    limits.files = 3;
    ChildLog log(path, limits);
    for (const char* line : {"11111", "22222", "33333", "44444"}) {
        QVERIFY(log.write(line));
    }
    QCOMPARE(bytesOf(path), QByteArray("44444\n"));
    QCOMPARE(bytesOf(path + QStringLiteral(".1")), QByteArray("33333\n"));
    QCOMPARE(bytesOf(path + QStringLiteral(".2")), QByteArray("22222\n"));
    QCOMPARE(QDir(directory.path()).entryList(QDir::Files).size(), 3);
}

void TestChildLog::folderThatCannotBeMadeIsReported()
{
    const QTemporaryDir directory;
    const QString inTheWay = directory.filePath(QStringLiteral("file"));
    QVERIFY(ChildLog(inTheWay).write("x"));
    QVERIFY(!ChildLog(inTheWay + QStringLiteral("/a.log")).write("x"));
}

void TestChildLog::resourceNamesItsFile()
{
    qputenv("XDG_STATE_HOME", "/state");
    QCOMPARE(logPathFor(QStringLiteral("ASRL/dev/ttyUSB0::INSTR")),
             QStringLiteral("/state/scn4070a/ASRL_dev_ttyUSB0_INSTR.log"));
    QCOMPARE(logPathFor(QStringLiteral("../../etc/x")),
             QStringLiteral("/state/scn4070a/.._.._etc_x.log"));
    QCOMPARE(logPathFor(QString(500, QLatin1Char('a'))),
             QStringLiteral("/state/scn4070a/%1.log").arg(QString(60, QLatin1Char('a'))));
    qunsetenv("XDG_STATE_HOME");
    QCOMPARE(logPathFor(QStringLiteral("a")),
             QDir::homePath() + QStringLiteral("/.local/state/scn4070a/a.log"));
}

SCN_TEST(TestChildLog, QCoreApplication)
#include "test_childlog.moc"
