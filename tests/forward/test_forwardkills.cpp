#include "followerprocess.h"
#include "keeper.h"
#include "readingsets.h"
#include "recordingprogram.h"
#include "support/postgresserver.h"
#include "support/testprogram.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// The follower, the server and the program that records are killed at random moments, and runs are cleared
// meanwhile. In the end the database has what is in the files, each reading once.

namespace {

constexpr int kKillsOfTheShortRun = 10;
constexpr int kLongestPauseMs = 400;

} // namespace

class TestForwardKills : public QObject
{
    Q_OBJECT

private slots:
    void killsLoseNothingAndDoubleNothing();

private:
    void pause();
    void killFollower();
    void killServer();
    void killProgram();
    void clearRun();
    void startFollower();

    QRandomGenerator m_random;
    QString m_base;
    QString m_data;
    QSet<QString> m_stored;
    std::unique_ptr<PostgresServer> m_server;
    std::unique_ptr<Keeper> m_keeper;
    std::unique_ptr<RecordingProgram> m_program;
    std::unique_ptr<FollowerProcess> m_follower;
};

void TestForwardKills::pause()
{
    QTest::qWait(static_cast<int>(m_random.bounded(kLongestPauseMs)));
}

void TestForwardKills::startFollower()
{
    m_follower = std::make_unique<FollowerProcess>(
        QStringList{m_base, QStringLiteral("--to"), m_server->address()});
}

void TestForwardKills::killFollower()
{
    m_follower->kill();
    if (m_random.bounded(2) == 0) {
        clearRun();
    }
    pause();
    startFollower();
}

void TestForwardKills::killServer()
{
    if (m_random.bounded(2) == 0) {
        m_server->killSessions();
        return;
    }
    m_server->stop();
    if (m_random.bounded(2) == 0) {
        clearRun();
    }
    pause();
    QVERIFY(m_server->start());
}

void TestForwardKills::killProgram()
{
    m_keeper->keep();
    m_program->kill(&m_stored);
    if (m_random.bounded(2) == 0) { // the next program's first start deletes the run, log and all
        m_keeper->keep();
        QDir(m_data).removeRecursively();
    }
    m_program = std::make_unique<RecordingProgram>(m_data);
    QVERIFY(m_program->isRecording());
}

void TestForwardKills::clearRun()
{
    m_keeper->keep();
    m_program->clear();
    QVERIFY(m_program->isRecording());
}

void TestForwardKills::killsLoseNothingAndDoubleNothing()
{
    if (PostgresServer::programDirectory().isEmpty()) {
        SCN_SKIP(QStringLiteral("PostgreSQL's server is not installed"));
    }
    const int kills = qEnvironmentVariableIsSet("SCN_KILLS")
                          ? qEnvironmentVariableIntValue("SCN_KILLS")
                          : kKillsOfTheShortRun;
    const quint32 seed = qEnvironmentVariableIsSet("SCN_SEED")
                             ? qgetenv("SCN_SEED").toUInt()
                             : QRandomGenerator::global()->generate();
    qInfo("SCN_SEED=%u", seed);
    m_random.seed(seed);
    const QTemporaryDir directory;
    m_base = directory.path();
    m_data = directory.filePath(QStringLiteral("MY1_Data"));
    m_server = std::make_unique<PostgresServer>();
    m_keeper = std::make_unique<Keeper>(m_data, directory.filePath(QStringLiteral("runs/MY1")));
    m_program = std::make_unique<RecordingProgram>(m_data);
    QVERIFY(m_program->isRecording());
    startFollower();
    using Kill = void (TestForwardKills::*)();
    constexpr Kill kKills[] = {&TestForwardKills::killFollower, &TestForwardKills::killServer,
                               &TestForwardKills::killProgram};
    for (int kill = 0; kill < kills; ++kill) {
        pause();
        (this->*kKills[m_random.bounded(3)])();
        if (m_random.bounded(3) == 0) {
            pause();
            clearRun();
        }
    }
    pause();
    m_keeper->keep();
    m_program->kill(&m_stored);
    QDir(m_data).removeRecursively();
    m_follower->kill();
    FollowerProcess last(
        {m_base, QStringLiteral("--to"), m_server->address(), QStringLiteral("--once")});
    QCOMPARE(last.exitCode(), 0);

    QStringList inFiles;
    for (const QString& file : m_keeper->files()) {
        inFiles += readingsets::inFile(file, QStringLiteral("MY1"));
    }
    inFiles.sort();
    const QStringList found = readingsets::inDatabase(*m_server);
    qInfo("%d kills, %d files, %d readings reported, %d in the files, %d in the database", kills,
          m_keeper->files().size(), m_stored.size(), inFiles.size(), found.size());
    QVERIFY(m_stored.size() > 50 * kills);
    QCOMPARE(readingsets::difference(inFiles, found), QString());
    for (const QString& reading : qAsConst(m_stored)) {
        QVERIFY2(std::binary_search(found.cbegin(), found.cend(), QStringLiteral("MY1 ") + reading),
                 qPrintable(reading));
    }
}

namespace {

int runOrRecord(int argc, char** argv)
{
    return RecordingProgram::isMeant(argc, argv)
               ? RecordingProgram::play(argc, argv)
               : testprogram::run<TestForwardKills, QCoreApplication>(argc, argv);
}

} // namespace

SCN_TEST_RUN(&runOrRecord)
#include "test_forwardkills.moc"
