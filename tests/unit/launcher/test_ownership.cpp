#include "launcher/ownership.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using namespace scnlauncher;

namespace {

constexpr uid_t kNobody = 65534;

const QString kThing = QStringLiteral("ASRL/dev/ttyUSB0::INSTR");
const QString kPlace = QStringLiteral("/home/li/data");

using Result = Ownership::Result;

/// A child that gets the lock.
class Heir : public QProcess
{
public:
    explicit Heir(const Ownership& ownership)
        : m_ownership(ownership)
    {
    }

protected:
    void setupChildProcess() override { m_ownership.passOn(); }

private:
    const Ownership& m_ownership;
};

/// Runs something in a process of another user; its result.
int asNobody(const std::function<int()>& work)
{
    const pid_t process = ::fork();
    if (process == 0) {
        ::_exit(::setuid(kNobody) == 0 ? work() : 100);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 101;
}

} // namespace

/// One thing has one owner, whatever becomes of it.
class TestOwnership : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void secondIsToldWhoTheFirstIs();
    void otherThingsAreFree();
    void releasedIsFreeAndLeavesNoFile();
    void killedOwnerHoldsNothing();
    void childHoldsOnWithoutItsLauncher();
    void otherChildrenDoNotHoldOn();
    void leftChildIsNamed();
    void anotherUserIsRefusedToo();
    void anotherUserTakesWhatWasLeft();
    void linkInTheWayIsNotFollowed();
    void ownerThatSignedNothingIsUnknown();
    void missingFolderIsTold();
    void folderOfTheEnvironmentIsTaken();
    void onlyOneOfManyHasIt();

private:
    QString folder() const { return m_folder->path(); }
    QStringList files() const { return QDir(folder()).entryList(QDir::Files); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestOwnership::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    // As /run/lock is: everybody's files, which only their owners delete.
    QCOMPARE(::chmod(qPrintable(folder()), 01777), 0);
}

void TestOwnership::secondIsToldWhoTheFirstIs()
{
    Ownership first(folder());
    Ownership second(folder());
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Taken);
    QCOMPARE(second.take(kThing, Owner::self(QString())), Result::HeldByOther);
    QVERIFY(!second.isHeld());

    const Owner owner = second.other();
    QCOMPARE(owner.processId, QCoreApplication::applicationPid());
    QCOMPARE(owner.place, kPlace);
    QVERIFY(qAbs(owner.since.secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(owner.description(),
             QStringLiteral("launcher_tests（进程 %1，用户 %2，自 %3 起，目录 /home/li/data）")
                 .arg(QString::number(owner.processId), Owner::self(QString()).user,
                      owner.since.toString(QStringLiteral("yyyy-MM-dd HH:mm"))));
}

void TestOwnership::otherThingsAreFree()
{
    Ownership first(folder());
    Ownership second(folder());
    QCOMPARE(first.take(QStringLiteral("a::b"), Owner::self(kPlace)), Result::Taken);
    QCOMPARE(second.take(QStringLiteral("a/b"), Owner::self(kPlace)), Result::Taken);
}

void TestOwnership::releasedIsFreeAndLeavesNoFile()
{
    Ownership first(folder());
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Taken);
    QCOMPARE(files().size(), 1);
    first.release();
    QCOMPARE(files(), QStringList());
    QVERIFY(!first.isHeld());

    Ownership second(folder());
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::Taken);
}

void TestOwnership::killedOwnerHoldsNothing()
{
    std::array<int, 2> ready{};
    QCOMPARE(::pipe(ready.data()), 0);
    const pid_t process = ::fork();
    if (process == 0) {
        Ownership ownership(folder());
        if (ownership.take(kThing, Owner::self(kPlace)) == Result::Taken &&
            ::write(ready[1], "1", 1) == 1) {
            ::pause();
        }
        ::_exit(1);
    }
    ::close(ready[1]);
    char byte = 0;
    QCOMPARE(::read(ready[0], &byte, 1), 1);
    ::close(ready[0]);
    Ownership second(folder());
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::HeldByOther);
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::Taken);
}

void TestOwnership::childHoldsOnWithoutItsLauncher()
{
    auto first = std::make_unique<Ownership>(folder());
    QCOMPARE(first->take(kThing, Owner::self(kPlace)), Result::Taken);
    Heir child(*first);
    child.start(QStringLiteral("sleep"), {QStringLiteral("600")});
    QVERIFY(child.waitForStarted());
    first.reset();

    Ownership second(folder());
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::HeldByOther);
    child.kill();
    QVERIFY(child.waitForFinished());
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::Taken);
    second.release();
    QCOMPARE(files(), QStringList());
}

void TestOwnership::otherChildrenDoNotHoldOn()
{
    Ownership first(folder());
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Taken);
    QProcess child;
    child.start(QStringLiteral("sleep"), {QStringLiteral("600")});
    QVERIFY(child.waitForStarted());
    first.release();

    Ownership second(folder());
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::Taken);
    child.kill();
    QVERIFY(child.waitForFinished());
}

void TestOwnership::leftChildIsNamed()
{
    QProcess ended;
    ended.start(QStringLiteral("true"), QStringList());
    QVERIFY(ended.waitForStarted());
    Owner owner = Owner::self(kPlace);
    owner.processId = ended.processId();
    owner.childProcessId = QCoreApplication::applicationPid();
    QVERIFY(ended.waitForFinished());

    Ownership first(folder());
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Taken);
    first.sign(owner);
    Ownership second(folder());
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::HeldByOther);
    const QString wanted =
        QStringLiteral("scn4070a（进程 %1，").arg(QCoreApplication::applicationPid());
    QVERIFY2(second.other().description().startsWith(wanted),
             qPrintable(second.other().description()));
}

void TestOwnership::anotherUserIsRefusedToo()
{
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can act as another user"));
    }
    Ownership first(folder());
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Taken);
    const int result = asNobody([this] {
        Ownership second(folder());
        const bool isRefused = second.take(kThing, Owner::self(QString())) == Result::HeldByOther;
        return isRefused && second.other().place == kPlace ? 0 : 1;
    });
    QCOMPARE(result, 0);
}

void TestOwnership::anotherUserTakesWhatWasLeft()
{
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can act as another user"));
    }
    const pid_t process = ::fork();
    if (process == 0) {
        ::umask(077);
        Ownership first(folder());
        // Ends without its destructors, as a crash does.
        ::_exit(first.take(kThing, Owner::self(kPlace)) == Result::Taken ? 0 : 1);
    }
    int status = 1;
    ::waitpid(process, &status, 0);
    QCOMPARE(status, 0);
    QCOMPARE(files().size(), 1);

    const int result = asNobody([this] {
        Ownership second(folder());
        return second.take(kThing, Owner::self(kPlace)) == Result::Taken ? 0 : 1;
    });
    QCOMPARE(result, 0);
}

void TestOwnership::linkInTheWayIsNotFollowed()
{
    Ownership first(folder());
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Taken);
    const QString lockFile = QDir(folder()).filePath(files().constFirst());
    first.release();

    const QTemporaryDir elsewhere;
    const QString victim = elsewhere.filePath(QStringLiteral("victim"));
    QFile file(victim);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    QVERIFY(QFile::link(victim, lockFile));
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Failed);
    QVERIFY(QFile::remove(lockFile));
    QCOMPARE(::link(qPrintable(victim), qPrintable(lockFile)), 0);
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Failed);
    QCOMPARE(QFileInfo(victim).size(), 4);
}

void TestOwnership::ownerThatSignedNothingIsUnknown()
{
    Ownership first(folder());
    QCOMPARE(first.take(kThing, Owner::self(kPlace)), Result::Taken);
    QVERIFY(QFile::resize(QDir(folder()).filePath(files().constFirst()), 0));
    Ownership second(folder());
    QCOMPARE(second.take(kThing, Owner::self(kPlace)), Result::HeldByOther);
    QCOMPARE(second.other().description(), QStringLiteral("另一个程序"));
}

void TestOwnership::missingFolderIsTold()
{
    Ownership ownership(folder() + QStringLiteral("/missing"));
    QCOMPARE(ownership.take(kThing, Owner::self(kPlace)), Result::Failed);
    QVERIFY(ownership.errorText().startsWith(QStringLiteral("无法使用锁文件 ")));
    QVERIFY(ownership.errorText().contains(QStringLiteral("请删除该文件")));
    QVERIFY(ownership.errorText().contains(QStringLiteral("No such file or directory")));
}

void TestOwnership::onlyOneOfManyHasIt()
{
    constexpr int kThreads = 4;
    constexpr int kTurns = 500;
    std::atomic<int> inside{0};
    std::atomic<int> crowds{0};
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            Ownership ownership(folder());
            for (int turns = 0; turns < kTurns;) {
                const Result result = ownership.take(kThing, Owner::self(kPlace));
                failures += result == Result::Failed ? 1 : 0;
                if (result == Result::HeldByOther) {
                    std::this_thread::yield();
                    continue;
                }
                crowds += inside.fetch_add(1) == 0 ? 0 : 1;
                std::this_thread::yield();
                inside.fetch_sub(1);
                ownership.release();
                ++turns;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(crowds.load(), 0);
    QCOMPARE(failures.load(), 0);
    QCOMPARE(files(), QStringList());
}

void TestOwnership::folderOfTheEnvironmentIsTaken()
{
    // That of the tests themselves.
    const QByteArray ours = qgetenv("SCN4070A_LOCK_FOLDER");
    QVERIFY(!ours.isEmpty());
    QCOMPARE(Ownership::commonLockFolder(), QFile::decodeName(ours));
    const QStringList usual{QStringLiteral("/run/lock"), QStringLiteral("/tmp")};
    for (const QByteArray& unusable : {QByteArray(), QByteArray("/no/such/folder")}) {
        qputenv("SCN4070A_LOCK_FOLDER", unusable);
        QVERIFY(usual.contains(Ownership::commonLockFolder()));
    }
    qputenv("SCN4070A_LOCK_FOLDER", ours);
}

SCN_TEST(TestOwnership, QCoreApplication)
#include "test_ownership.moc"
