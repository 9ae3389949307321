#include "scriptedconnection.h"
#include "storage/currentfile.h"
#include "storage/storeclock.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>

// Today's file on connections that do what no file can be made to do at a given statement.

using namespace scn;
using Answer = ScriptedConnection::Answer;

namespace {

constexpr qint64 kPresent = 1768210200000; // 12 January 2026, 09:30 UTC
constexpr int kRepairMs = 5000;

/// Hands out one connection, whatever the file.
class OneConnection : public DayFiles
{
public:
    OneConnection(const QString& directory, const std::atomic<bool>& no)
        : DayFiles(directory, FileAccess::Write, no, no)
    {
    }

    QSharedPointer<QSqlDatabase> open(const QString&) const override
    {
        ++opened;
        return connection;
    }

    QSharedPointer<QSqlDatabase> connection;
    mutable int opened = 0;
};

/// Today's file with the memory that it works on.
class Scene
{
public:
    Scene() { QFile(files.path(QStringLiteral("20260112"))).open(QIODevice::WriteOnly); }

    QTemporaryDir directory;
    QString path;
    QString date;
    QSharedPointer<QSqlDatabase> db;
    QMap<int, QString> names;
    QMap<int, DBCurveMetadata> extremes;
    QVector<DBBatchInfo> batches;
    std::atomic<bool> no{false};
    OneConnection files{directory.path(), no};
    StoreMemory memory{path, date, db, names, extremes, batches};
    CurrentFile file{memory, files};
};

} // namespace

class TestCurrentFile : public QObject
{
    Q_OBJECT

private slots:
    void init() { setPresent(kPresent); }
    void cleanupTestCase() { setStoreClock(nullptr); }

    void connectionThatClosesWhileCurvesAreRegistered_data();
    void connectionThatClosesWhileCurvesAreRegistered();
    void repairThatFindsTheFileReadOnlyWaits();

private:
    const ZoneGuard m_zone{"UTC"};
};

void TestCurrentFile::connectionThatClosesWhileCurvesAreRegistered_data()
{
    QTest::addColumn<bool>("opensAgain");
    QTest::addColumn<QStringList>("log");
    QTest::addColumn<QStringList>("inserted");
    const QString closed = QStringLiteral("critical: 数据库已关闭，尝试重新打开...");
    QTest::newRow("opened again") << true << QStringList{closed}
                                  << QStringList{QStringLiteral("102(V)"),
                                                 QStringLiteral("103(V)")};
    QTest::newRow("not to be opened")
        << false
        << QStringList{closed, QStringLiteral("critical: 重新打开失败! 错误: \"连接无效\"")}
        << QStringList();
}

void TestCurrentFile::connectionThatClosesWhileCurvesAreRegistered()
{
    QFETCH(const bool, opensAgain);
    Scene scene;
    scene.names = {{1, QStringLiteral("101(V)")},
                   {2, QStringLiteral("102(V)")},
                   {3, QStringLiteral("103(V)")}};
    QStringList inserted;
    const ScriptedConnection second([&](const QString& sql) {
        if (sql.startsWith(QLatin1String("INSERT INTO curve_info"))) {
            inserted.append(sql.section(QLatin1Char('\''), 1, 1));
        }
        return Answer::Done;
    });
    const ScriptedConnection first([&](const QString& sql) {
        if (!sql.startsWith(QLatin1String("INSERT INTO curve_info"))) {
            return Answer::Done;
        }
        scene.files.connection = opensAgain ? second.database() : QSharedPointer<QSqlDatabase>();
        return Answer::DoneAndClosed;
    });
    scene.files.connection = first.database();
    const LogCapture log;
    scene.file.attach();
    QTEST(log.lines(), "log");
    QTEST(inserted, "inserted");
    QCOMPARE(scene.file.attachment().isUnfit(), !opensAgain);
}

/// What was only incomplete can turn out to be read-only as well when it is opened again.
void TestCurrentFile::repairThatFindsTheFileReadOnlyWaits()
{
    const ScriptedConnection incomplete([](const QString&) { return Answer::MissingTable; });
    const ScriptedConnection readOnly([](const QString&) { return Answer::ReadOnly; });
    Scene scene;
    const LogCapture log;
    scene.files.connection = incomplete.database();
    scene.file.attach();
    QVERIFY(scene.file.attachment().isUnfit());
    QVERIFY(!scene.file.attachment().isReadOnly());

    scene.files.connection = readOnly.database();
    scene.file.repair();
    QVERIFY(scene.file.attachment().isReadOnly());
    const int opened = scene.files.opened;
    scene.file.repair();
    advancePresent(kRepairMs - 1);
    scene.file.repair();
    QCOMPARE(scene.files.opened, opened);
    advancePresent(1);
    scene.file.repair();
    QVERIFY(scene.files.opened > opened);
}

SCN_TEST(TestCurrentFile, QCoreApplication)
#include "test_currentfile.moc"
