#include "launcher/childlog.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
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
    void readerOfARotatedFileKeepsIt();
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

void TestChildLog::readerOfARotatedFileKeepsIt()
{
    const QTemporaryDir directory;
    ChildLog::Limits limits;
    limits.bytes = 10;
    ChildLog log(directory.filePath(QStringLiteral("a.log")), limits);
    QVERIFY(log.write("11111"));
    QFile reader(log.path());
    QVERIFY(reader.open(QIODevice::ReadOnly));
    QCOMPARE(reader.readLine(), QByteArray("11111\n"));
    QVERIFY(log.write("22222"));
    // What was open is now the older file, whole and without the newer lines.
    QCOMPARE(reader.readAll(), QByteArray());
    QVERIFY(reader.seek(0));
    QCOMPARE(reader.readAll(), QByteArray("11111\n"));
    QCOMPARE(bytesOf(log.path()), QByteArray("22222\n"));
    QCOMPARE(bytesOf(log.path() + QStringLiteral(".1")), QByteArray("11111\n"));
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
             QStringLiteral("/state/scn4070a/ASRL-dev-ttyUSB0-INSTR.log"));
    const QString strange = logPathFor(QStringLiteral("../../etc/x"));
    QCOMPARE(QFileInfo(strange).path(), QStringLiteral("/state/scn4070a"));
    // Names that begin alike keep apart.
    const QString common(500, QLatin1Char('a'));
    QVERIFY(logPathFor(common + QLatin1Char('1')) != logPathFor(common + QLatin1Char('2')));
    QVERIFY(QFileInfo(logPathFor(common)).fileName().size() < 100);
    qunsetenv("XDG_STATE_HOME");
    QCOMPARE(logPathFor(QStringLiteral("a")),
             QDir::homePath() + QStringLiteral("/.local/state/scn4070a/a.log"));
}

SCN_TEST(TestChildLog, QCoreApplication)
#include "test_childlog.moc"
