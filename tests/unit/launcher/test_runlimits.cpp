#include "launcher/place/fileuse.h"
#include "launcher/place/keptrun.h"
#include "launcher/runlimits.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace scnlauncher;

namespace {

const QDateTime kNow(QDate(2026, 6, 30), QTime(12, 0));
constexpr int kMegabyte = 1024 * 1024;

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

void setModified(const QString& path, const QDateTime& time)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
}

/// Kept runs of one instrument, each with a day file, its log and the facts.
class KeptRuns
{
public:
    QString root() const { return m_folder.path(); }
    QString path(int number) const
    {
        return QStringLiteral("%1/SN1/2026-06-%2_12-00-00")
            .arg(m_folder.path())
            .arg(number, 2, 10, QLatin1Char('0'));
    }
    QString file(int number, const QString& name = QStringLiteral("20260601.db")) const
    {
        return path(number) + QLatin1Char('/') + name;
    }

    /// Runs on the given day of the month, and is last written on it.
    void add(int number, int bytes = 10) const
    {
        QDir().mkpath(path(number));
        KeptRun run;
        run.folder = path(number);
        run.serial = QStringLiteral("SN1");
        run.start = QDateTime(QDate(2026, 6, number), QTime(12, 0));
        for (const char* name : {"20260601.db", "20260601.db-wal"}) {
            const QString path = file(number, QString::fromLatin1(name));
            write(path, QByteArray(bytes / 2, 'x'));
            setModified(path, run.start);
            run.files.insert(QString::fromLatin1(name), QString::number(factsOf(path)->number));
        }
        QVERIFY(run.write());
    }

    /// The days of the runs that are there.
    QString days() const
    {
        QStringList days;
        for (const QString& name : QDir(m_folder.filePath(QStringLiteral("SN1")))
                                       .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            days.append(QString::number(name.midRef(8, 2).toInt()));
        }
        return days.join(QLatin1Char(' '));
    }

    void tidy(const RunLimits& limits) const { tidyRuns(root(), limits, kNow); }

private:
    const QTemporaryDir m_folder;
};

} // namespace

/// What is removed of kept runs, and what is not.
class TestRunLimits : public QObject
{
    Q_OBJECT

private slots:
    void limitsRemoveTheOldest_data();
    void limitsRemoveTheOldest();
    void nothingIsLeftOfARemovedRun();
    void readersFilesGoWithTheRun();
    void runWithAnotherNameStays();
    void openRunStays();
    void foreignFileStaysWithItsFolder();
    void fileThatTookANameStays();
    void folderWithoutFactsStays();
    void spentLogsGo_data();
    void spentLogsGo();
};

void TestRunLimits::limitsRemoveTheOldest_data()
{
    QTest::addColumn<int>("days");
    QTest::addColumn<int>("runs");
    QTest::addColumn<int>("megabytes");
    QTest::addColumn<QString>("left");
    QTest::newRow("off") << 0 << 0 << 0 << "1 10 20 29";
    QTest::newRow("age") << 15 << 0 << 0 << "20 29";
    QTest::newRow("age of all") << 1 << 0 << 0 << "29";
    QTest::newRow("count") << 0 << 3 << 0 << "10 20 29";
    QTest::newRow("size") << 0 << 0 << 5 << "20 29";
    QTest::newRow("size of each") << 0 << 0 << 1 << "";
    QTest::newRow("all met") << 90 << 4 << 8 << "1 10 20 29";
    QTest::newRow("the strictest counts") << 90 << 1 << 8 << "29";
}

void TestRunLimits::limitsRemoveTheOldest()
{
    QFETCH(int, days);
    QFETCH(int, runs);
    QFETCH(int, megabytes);
    QFETCH(QString, left);
    const KeptRuns kept;
    for (const int day : {20, 1, 29, 10}) {
        kept.add(day, 2 * kMegabyte);
    }
    kept.tidy({days, runs, megabytes});
    QCOMPARE(kept.days(), left);
}

void TestRunLimits::nothingIsLeftOfARemovedRun()
{
    const KeptRuns kept;
    kept.add(1);
    kept.tidy({1, 0, 0});
    QCOMPARE(QDir(kept.root()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

/// A reader that was killed leaves them.
void TestRunLimits::readersFilesGoWithTheRun()
{
    const KeptRuns kept;
    kept.add(1);
    write(kept.file(1, QStringLiteral("20260601.db-shm")), QByteArray(100, 'x'));
    kept.tidy({1, 0, 0});
    QCOMPARE(kept.days(), QString());
}

void TestRunLimits::runWithAnotherNameStays()
{
    const KeptRuns kept;
    for (const int day : {1, 2, 3}) {
        kept.add(day);
    }
    // Its data directory is still there.
    QVERIFY(!addName(kept.file(1), kept.root() + QStringLiteral("/20260601.db")));
    kept.tidy({1, 1, 1});
    QCOMPARE(kept.days(), QStringLiteral("1"));
    QVERIFY(QFile::exists(kept.file(1)));
}

void TestRunLimits::openRunStays()
{
    const KeptRuns kept;
    kept.add(1);
    QVERIFY(QFile::remove(kept.file(1)));
    QVERIFY(QFile::remove(kept.file(1, QStringLiteral("20260601.db-wal"))));
    QProcess other;
    other.start(QStringLiteral("sqlite3"), {kept.file(1)});
    other.write("PRAGMA journal_mode = WAL; CREATE TABLE t (i); SELECT 'ready';\n");
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT((said += other.readAllStandardOutput()).contains("ready"), 30000);
    auto run = KeptRun::in(kept.path(1));
    run->files = {{QStringLiteral("20260601.db"), QString::number(factsOf(kept.file(1))->number)}};
    QVERIFY(run->write());
    tidyRuns(kept.root(), {1, 0, 0}, QDateTime::currentDateTime().addDays(9));
    QVERIFY(QFile::exists(kept.file(1)));
    other.closeWriteChannel();
    QVERIFY(other.waitForFinished());
    tidyRuns(kept.root(), {1, 0, 0}, QDateTime::currentDateTime().addDays(9));
    QVERIFY(!QFile::exists(kept.file(1)));
}

void TestRunLimits::foreignFileStaysWithItsFolder()
{
    const KeptRuns kept;
    kept.add(1);
    for (const char* name : {"notes.txt", "20260602.db"}) {
        write(kept.file(1, QString::fromLatin1(name)), "mine");
    }
    kept.tidy({1, 0, 0});
    QCOMPARE(QDir(kept.path(1)).entryList(QDir::Files, QDir::Name),
             (QStringList{QStringLiteral("20260602.db"), QStringLiteral("notes.txt")}));
}

void TestRunLimits::fileThatTookANameStays()
{
    const KeptRuns kept;
    kept.add(1);
    const QString copy = kept.root() + QStringLiteral("/copy");
    QVERIFY(QFile::copy(kept.file(1), copy));
    QVERIFY(QFile::remove(kept.file(1)));
    QVERIFY(QFile::rename(copy, kept.file(1)));
    setModified(kept.file(1), kNow.addDays(-9));
    kept.tidy({1, 0, 0});
    QVERIFY(QFile::exists(kept.file(1)));
}

void TestRunLimits::folderWithoutFactsStays()
{
    const KeptRuns kept;
    kept.add(1);
    QVERIFY(QFile::remove(kept.file(1, QStringLiteral("run.json"))));
    kept.tidy({1, 1, 1});
    QCOMPARE(QDir(kept.path(1)).entryList(QDir::Files).size(), 2);
}

void TestRunLimits::spentLogsGo_data()
{
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<int>("secondsLater");
    QTest::addColumn<bool>("stays");
    QTest::newRow("folded in") << QByteArray() << 0 << false;
    QTest::newRow("needed") << QByteArray("x") << 0 << true;
    QTest::newRow("while it was folded in") << QByteArray("x") << 20 << true;
    QTest::newRow("of an earlier state") << QByteArray("x") << 3600 << false;
}

void TestRunLimits::spentLogsGo()
{
    QFETCH(QByteArray, log);
    QFETCH(int, secondsLater);
    QFETCH(bool, stays);
    const KeptRuns kept;
    kept.add(1);
    const QString wal = kept.file(1, QStringLiteral("20260601.db-wal"));
    write(wal, log);
    setModified(kept.file(1), QDateTime::currentDateTime().addSecs(secondsLater));
    kept.tidy({});
    QCOMPARE(QFile::exists(wal), stays);
    QCOMPARE(KeptRun::in(kept.path(1))->files.size(), stays ? 2 : 1);
    QVERIFY(QFile::exists(kept.file(1)));
}

SCN_TEST(TestRunLimits, QCoreApplication)
#include "test_runlimits.moc"
