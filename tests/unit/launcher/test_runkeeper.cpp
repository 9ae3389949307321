#include "launcher/place/fileuse.h"
#include "launcher/place/keptrun.h"
#include "launcher/runkeeper.h"
#include "support/asnobody_posix.h"
#include "support/privatemounts.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace scnlauncher;
using Writer = RunKeeper::Writer;

namespace {

constexpr std::chrono::milliseconds kAtOnce{0};
const QDateTime kLongAgo(QDate(2020, 1, 1), QTime(0, 0));

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

/// A folder with a program's data directory, and what a keeper makes of it.
class Place
{
public:
    explicit Place(const QString& dataDirectory = QStringLiteral("SN1_Data"))
        : m_name(dataDirectory)
        , m_root(QFileInfo(m_folder.path()).canonicalFilePath())
    {
    }

    QString root() const { return m_root; }
    QString data() const { return m_root + QLatin1Char('/') + m_name; }
    QString runs() const { return m_root + QStringLiteral("/runs"); }

    void write(const QString& name, const QByteArray& content) const
    {
        QDir().mkpath(data());
        QFile file(data() + QLatin1Char('/') + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    bool remove(const QString& name) const
    {
        return QFile::remove(data() + QLatin1Char('/') + name);
    }
    void deleteRun() const { QVERIFY(QDir(data()).removeRecursively()); }

    RunKeeper keeper(std::chrono::milliseconds vanishedFor = kAtOnce) const
    {
        return RunKeeper(m_root, QStringLiteral("TCPIP0::h::1::SOCKET"), kLongAgo, vanishedFor);
    }

    /// The kept runs, oldest first.
    QStringList kept(const QString& serial = QStringLiteral("SN1")) const
    {
        const QDir folder(runs() + QLatin1Char('/') + serial);
        QStringList paths;
        for (const QString& name :
             folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            paths.append(folder.filePath(name));
        }
        return paths;
    }
    static QStringList filesIn(const QString& folder)
    {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

private:
    const QTemporaryDir m_folder;
    const QString m_name;
    const QString m_root;
};

/// SQLite's own shell with a file open, in a process of its own, until it is killed.
class Shell
{
public:
    explicit Shell(const QString& file)
    {
        m_process.start(QStringLiteral("sqlite3"), {QStringLiteral("-bail"), file});
    }
    ~Shell() { kill(); }
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    /// Returns when the statements are through.
    void run(const char* statements)
    {
        m_process.write(statements);
        m_process.write("\nSELECT 'through';\n");
        QByteArray output;
        while (!output.contains("through")) {
            QVERIFY(m_process.waitForReadyRead());
            output += m_process.readAllStandardOutput();
        }
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

const QString kDay = QStringLiteral("20260112.db");
const QString kNextDay = QStringLiteral("20260113.db");
const QString kWal = QStringLiteral("20260112.db-wal");
const QString kJournal = QStringLiteral("20260112.db-journal");
const QString kFacts = QStringLiteral("run.json");

} // namespace

/// The second names that keep a run, on real files.
class TestRunKeeper : public QObject
{
    Q_OBJECT

private slots:
    void runOutlivesItsDeletion();
    void factsTellWhatItIs();
    void runFromBeforeHasNoInstrument();
    void nextDayJoinsTheRun();
    void newRunGetsAFolderOfItsOwn();
    void laterKeeperGoesOnWithTheRun();
    void movedFolderGoesOnWithTheRun();
    void otherFileOfTheSameDayGoesElsewhere();
    void walFollowsTheFile();
    void walOfADeletionInProgressStays();
    void journalIsKeptOnlyOfAnEndedProgram();
    void journalOfAFileInUseIsNotKept();
    void journalThatWasPlayedBackGoesAtOnce();
    void onlyDayFilesAreKept();
    void linkedDirectoryIsLeftAlone();
    void serialIsNoPath();
    void withoutLinksItSaysSo();
    void filesOfAnotherUserHoldNothingBack_data();
    void filesOfAnotherUserHoldNothingBack();
    void fullDiskIsTriedAgain();
};

void TestRunKeeper::runOutlivesItsDeletion()
{
    const Place place;
    place.write(kDay, "one");
    RunKeeper keeper = place.keeper();
    keeper.keep(Writer::Running);
    QCOMPARE(place.kept().size(), 1);
    const QString kept = place.kept().constFirst() + QLatin1Char('/') + kDay;
    // No byte is copied: it is the same file.
    QVERIFY(factsOf(kept)->isSameFile(*factsOf(place.data() + QLatin1Char('/') + kDay)));
    place.write(kDay, "one, and more");
    place.deleteRun();
    keeper.keep(Writer::Running);
    QCOMPARE(contentOf(kept), QByteArray("one, and more"));
    QCOMPARE(factsOf(kept)->names, quint64(1));
    QCOMPARE(keeper.problem(), QString());
    QCOMPARE(Place::filesIn(place.root()), QStringList());
}

void TestRunKeeper::factsTellWhatItIs()
{
    const Place place;
    place.write(kDay, "one");
    const QDateTime before = QDateTime::currentDateTime();
    place.keeper().keep(Writer::Running);
    const QString folder = place.kept().constFirst();
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kFacts}));
    const QJsonObject facts =
        QJsonDocument::fromJson(contentOf(folder + QLatin1Char('/') + kFacts)).object();
    QCOMPARE(facts.value(QLatin1String("instrument")).toString(),
             QStringLiteral("TCPIP0::h::1::SOCKET"));
    QCOMPARE(facts.value(QLatin1String("serial")).toString(), QStringLiteral("SN1"));
    QCOMPARE(facts.value(QLatin1String("source")).toString(), place.data());
    const QString start = facts.value(QLatin1String("start")).toString();
    const QDateTime time = QDateTime::fromString(start, Qt::ISODate);
    QVERIFY2(qAbs(time.secsTo(before)) < 60, qPrintable(start));
    QCOMPARE(time.offsetFromUtc(), before.offsetFromUtc());
    QVERIFY2(start.contains(QLatin1Char('+')) || start.endsWith(QLatin1Char('Z')) ||
                 start.count(QLatin1Char('-')) == 3,
             qPrintable(start));
    QCOMPARE(QFileInfo(folder).fileName(),
             time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss")));
}

void TestRunKeeper::runFromBeforeHasNoInstrument()
{
    const Place place;
    place.write(kDay, "one");
    RunKeeper(place.root(), QStringLiteral("ASRL1::INSTR"),
              QDateTime::currentDateTime().addSecs(60))
        .keep(Writer::Ended);
    const auto run = KeptRun::in(place.kept().constFirst());
    QVERIFY(run);
    QCOMPARE(run->instrument, QString());
}

void TestRunKeeper::nextDayJoinsTheRun()
{
    const Place place;
    place.write(kDay, "one");
    RunKeeper keeper = place.keeper();
    keeper.keep(Writer::Running);
    place.write(kNextDay, "two");
    keeper.keep(Writer::Running);
    keeper.keep(Writer::Running);
    QCOMPARE(place.kept().size(), 1);
    QCOMPARE(Place::filesIn(place.kept().constFirst()), (QStringList{kDay, kNextDay, kFacts}));
}

void TestRunKeeper::newRunGetsAFolderOfItsOwn()
{
    const Place place;
    RunKeeper keeper = place.keeper();
    QStringList contents;
    for (const char* content : {"first", "second", "third"}) {
        place.write(kDay, content);
        keeper.keep(Writer::Running);
        place.deleteRun();
    }
    for (const QString& folder : place.kept()) {
        contents.append(QString::fromLatin1(contentOf(folder + QLatin1Char('/') + kDay)));
    }
    contents.sort();
    QCOMPARE(contents, (QStringList{QStringLiteral("first"), QStringLiteral("second"),
                                    QStringLiteral("third")}));
}

void TestRunKeeper::laterKeeperGoesOnWithTheRun()
{
    const Place place;
    place.write(kDay, "one");
    place.keeper().keep(Writer::Running);
    place.write(kNextDay, "two");
    place.keeper().keep(Writer::Ended);
    QCOMPARE(place.kept().size(), 1);
    QCOMPARE(Place::filesIn(place.kept().constFirst()), (QStringList{kDay, kNextDay, kFacts}));
}

void TestRunKeeper::movedFolderGoesOnWithTheRun()
{
    const QTemporaryDir place;
    const QString before = place.filePath(QStringLiteral("before"));
    const QString after = place.filePath(QStringLiteral("after"));
    const auto keepIn = [](const QString& folder) {
        RunKeeper(folder, QStringLiteral("TCPIP0::h::1::SOCKET"), kLongAgo).keep(Writer::Running);
    };
    QVERIFY(QDir().mkpath(before + QStringLiteral("/SN1_Data")));
    QFile file(before + QStringLiteral("/SN1_Data/") + kDay);
    QVERIFY(file.open(QIODevice::WriteOnly));
    keepIn(before);
    QVERIFY(QFile::rename(before, after));
    keepIn(after);
    const QVector<KeptRun> kept = keptRunsIn(keptRunsFolder(after));
    QCOMPARE(kept.size(), 1);
    QCOMPARE(kept.constFirst().source,
             QFileInfo(after + QStringLiteral("/SN1_Data")).canonicalFilePath());
    QCOMPARE(factsOf(kept.constFirst().path(kDay))->names, quint64(2));
}

void TestRunKeeper::otherFileOfTheSameDayGoesElsewhere()
{
    const Place place;
    place.write(kDay, "one");
    place.write(kNextDay, "two");
    RunKeeper keeper = place.keeper();
    keeper.keep(Writer::Running);
    QVERIFY(place.remove(kNextDay));
    place.write(kNextDay, "another two");
    keeper.keep(Writer::Running);
    QCOMPARE(place.kept().size(), 2);
    QCOMPARE(contentOf(place.kept().constFirst() + QLatin1Char('/') + kNextDay), QByteArray("two"));
    QCOMPARE(Place::filesIn(place.kept().constLast()), (QStringList{kNextDay, kFacts}));
    QCOMPARE(contentOf(place.kept().constLast() + QLatin1Char('/') + kNextDay),
             QByteArray("another two"));
}

void TestRunKeeper::walFollowsTheFile()
{
    const Place place;
    place.write(kDay, "one");
    place.write(kWal, "log");
    RunKeeper patient = place.keeper(std::chrono::hours(1));
    patient.keep(Writer::Running);
    const QString folder = place.kept().constFirst();
    const QString wal = folder + QLatin1Char('/') + kWal;
    QCOMPARE(contentOf(wal), QByteArray("log"));
    // Another log: the first has been folded in.
    QVERIFY(place.remove(kWal));
    place.write(kWal, "newer log");
    patient.keep(Writer::Running);
    QCOMPARE(contentOf(wal), QByteArray("newer log"));
    // None: the file is whole without.
    QVERIFY(place.remove(kWal));
    RunKeeper keeper = place.keeper();
    keeper.keep(Writer::Running);
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kFacts}));
    QVERIFY(!KeptRun::in(folder)->files.contains(kWal));
    // A deleted run's log stays with it.
    place.write(kWal, "last log");
    keeper.keep(Writer::Running);
    place.deleteRun();
    keeper.keep(Writer::Running);
    QCOMPARE(contentOf(wal), QByteArray("last log"));
}

/// The files of a run are deleted one after the other.
void TestRunKeeper::walOfADeletionInProgressStays()
{
    const Place place;
    place.write(kDay, "one");
    place.write(kWal, "log");
    RunKeeper keeper = place.keeper(std::chrono::hours(1));
    keeper.keep(Writer::Running);
    QVERIFY(place.remove(kWal));
    keeper.keep(Writer::Running);
    place.deleteRun();
    keeper.keep(Writer::Running);
    QCOMPARE(Place::filesIn(place.kept().constFirst()), (QStringList{kDay, kWal, kFacts}));
}

void TestRunKeeper::journalIsKeptOnlyOfAnEndedProgram()
{
    const Place place;
    place.write(kDay, "one");
    place.write(kJournal, "undo");
    RunKeeper keeper = place.keeper();
    keeper.keep(Writer::Running);
    const QString folder = place.kept().constFirst();
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kFacts}));
    keeper.keep(Writer::Ended);
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kJournal, kFacts}));
    QVERIFY(place.remove(kJournal));
    keeper.keep(Writer::Running);
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kFacts}));
}

/// The program may have been started since the one before ended.
void TestRunKeeper::journalOfAFileInUseIsNotKept()
{
    const Place place;
    QVERIFY(QDir().mkpath(place.data()));
    Shell shell(place.data() + QLatin1Char('/') + kDay);
    shell.run("CREATE TABLE t(v); BEGIN IMMEDIATE; INSERT INTO t VALUES(1);");
    QVERIFY(QFileInfo::exists(place.data() + QLatin1Char('/') + kJournal));
    RunKeeper keeper = place.keeper();
    keeper.keep(Writer::Ended);
    const QString folder = place.kept().constFirst();
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kFacts}));
    // Killed, it leaves a journal that is needed.
    shell.kill();
    keeper.keep(Writer::Ended);
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kJournal, kFacts}));
}

void TestRunKeeper::journalThatWasPlayedBackGoesAtOnce()
{
    const Place place;
    QVERIFY(QDir().mkpath(place.data()));
    const QString path = place.data() + QLatin1Char('/') + kDay;
    Shell(path).run("CREATE TABLE t(v); BEGIN IMMEDIATE; INSERT INTO t VALUES(1);");
    RunKeeper keeper = place.keeper(std::chrono::hours(1));
    keeper.keep(Writer::Ended);
    const QString folder = place.kept().constFirst();
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kJournal, kFacts}));
    Shell next(path);
    next.run("PRAGMA journal_mode = WAL; INSERT INTO t VALUES(2);");
    QVERIFY(!QFileInfo::exists(place.data() + QLatin1Char('/') + kJournal));
    keeper.keep(Writer::Running);
    QCOMPARE(Place::filesIn(folder), (QStringList{kDay, kWal, kFacts}));
}

void TestRunKeeper::onlyDayFilesAreKept()
{
    const Place place;
    place.write(QStringLiteral("notes.txt"), "mine");
    place.write(QStringLiteral("20260112.db-shm"), "index");
    place.write(QStringLiteral("copy of 20260112.db"), "copy");
    QVERIFY(QFile::link(place.root(), place.data() + QStringLiteral("/20260114.db")));
    place.keeper().keep(Writer::Ended);
    QVERIFY(!QFileInfo::exists(place.runs()));
}

void TestRunKeeper::linkedDirectoryIsLeftAlone()
{
    const Place place;
    const Place other;
    other.write(kDay, "someone else's");
    QVERIFY(QFile::link(other.data(), place.data()));
    place.keeper().keep(Writer::Ended);
    QVERIFY(!QFileInfo::exists(place.runs()));
}

void TestRunKeeper::serialIsNoPath()
{
    const Place place(QStringLiteral(".._Data"));
    place.write(kDay, "one");
    place.keeper().keep(Writer::Running);
    QCOMPARE(QDir(place.root()).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden),
             (QStringList{QStringLiteral(".._Data"), QStringLiteral("runs")}));
    QCOMPARE(keptRunsIn(place.runs()).size(), 1);
    QCOMPARE(keptRunsIn(place.runs()).constFirst().serial, QStringLiteral(".."));
}

void TestRunKeeper::withoutLinksItSaysSo()
{
    const Place place;
    QVERIFY(QDir().mkpath(place.runs()));
    // Another device.
    const auto mount = privatemounts::Mount::disk(place.runs(), 1 << 20);
    QVERIFY(mount.isMounted());
    RunKeeper keeper = place.keeper();
    const QString told = QStringLiteral("此处的文件系统没有硬链接，测量数据不会保留");
    // Before there is a run.
    QCOMPARE(keeper.problem(), told);
    place.write(kDay, "one");
    keeper.keep(Writer::Running);
    QCOMPARE(keeper.problem(), told);
    QCOMPARE(QDir(place.runs()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    QCOMPARE(Place::filesIn(place.data()), QStringList(kDay));
}

void TestRunKeeper::filesOfAnotherUserHoldNothingBack_data()
{
    QTest::addColumn<QString>("foreign");
    QTest::newRow("before its own") << QStringLiteral("SN0_Data");
    QTest::newRow("after its own") << QStringLiteral("SN2_Data");
    QTest::newRow("beside its own") << QStringLiteral("SN1_Data");
}

void TestRunKeeper::filesOfAnotherUserHoldNothingBack()
{
    QFETCH(QString, foreign);
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can give files to others"));
    }
    QFile protection(QStringLiteral("/proc/sys/fs/protected_hardlinks"));
    if (!protection.open(QIODevice::ReadOnly) || protection.readAll().trimmed() != "1") {
        SCN_SKIP(QStringLiteral("fs.protected_hardlinks is off: files of others can be linked"));
    }
    const Place place;
    const QString directory = place.root() + QLatin1Char('/') + foreign;
    QVERIFY(QDir().mkpath(directory));
    QFile file(directory + QLatin1Char('/') + kDay);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QVERIFY(::chmod(place.root().toLocal8Bit().constData(), 0777) == 0);
    QVERIFY(::chmod(directory.toLocal8Bit().constData(), 0777) == 0);

    const AsNobody nobody;
    QVERIFY(nobody.isNobody());
    place.write(kNextDay, "one");
    RunKeeper keeper = place.keeper();
    QCOMPARE(keeper.problem(), QString());
    for (int look = 0; look < 2; ++look) {
        keeper.keep(Writer::Running);
        QCOMPARE(keptRunsIn(place.runs()).size(), 1);
        QCOMPARE(place.kept().size(), 1);
        QCOMPARE(Place::filesIn(place.kept().constFirst()), (QStringList{kNextDay, kFacts}));
        QCOMPARE(
            keeper.problem(),
            QStringLiteral("没有权限为 %1 中的文件建立硬链接，其测量数据没有保留").arg(directory));
        QCOMPARE(QDir(place.runs()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 QStringList(QStringLiteral("SN1")));
    }
}

void TestRunKeeper::fullDiskIsTriedAgain()
{
    const Place place;
    const auto mount = privatemounts::Mount::disk(place.root(), 1 << 20);
    QVERIFY(mount.isMounted());
    place.write(kDay, "one");
    RunKeeper keeper = place.keeper();
    privatemounts::fillDisk(place.root() + QStringLiteral("/filler"));
    keeper.keep(Writer::Running);
    QCOMPARE(keeper.problem(), QStringLiteral("无法写入 %1，测量数据没有保留").arg(place.runs()));
    QVERIFY(keptRunsIn(place.runs()).isEmpty());
    QVERIFY(QFile::remove(place.root() + QStringLiteral("/filler")));
    keeper.keep(Writer::Running);
    QCOMPARE(keeper.problem(), QString());
    QCOMPARE(keptRunsIn(place.runs()).size(), 1);
}

SCN_TEST_RUN((&privatemounts::run<TestRunKeeper, QCoreApplication>))
#include "test_runkeeper.moc"
