#include "launcher/place/programplace.h"
#include "support/privatemounts.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

#include <memory>

using namespace scnlauncher;

namespace {

constexpr qint64 kSmallDisk = 64 * 1024;

ino_t inodeOf(const QString& path)
{
    struct stat file = {};
    return ::stat(qPrintable(path), &file) == 0 ? file.st_ino : 0;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// Where a child is started, and the copy that is put there.
class TestProgramPlace : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void companionIsBesideTheLauncher();
    void writableFolderTakesData();
    void readOnlyFolderTakesNone();
    void systemFolderTakesNone();
    void folderOfTheUser_data();
    void folderOfTheUser();
    void copyIsALinkOnTheSameDisk();
    void copyIsAFileOnAnotherDisk();
    void linkToTheProgramIsFollowed();
    void currentCopyStays();
    void olderCopyIsReplacedInOneStep();
    void interruptedCopyIsNoObstacle();
    void fullDiskIsTold();
    void missingProgramIsTold();
    void fileInTheWayIsTold();
    void readOnlyHomeIsTold();

private:
    void writeProgram(const QByteArray& text) const;
    QString program() const { return m_folder->filePath(QStringLiteral("installed/program")); }
    QString home() const { return m_folder->filePath(QStringLiteral("home")); }
    QString copy() const { return home() + QStringLiteral("/program"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestProgramPlace::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(m_folder->filePath(QStringLiteral("installed"))));
    writeProgram("#!/bin/sh\necho first\n");
}

void TestProgramPlace::writeProgram(const QByteArray& text) const
{
    // As package managers do: a new file in the old one's place.
    QFile::remove(program());
    QFile file(program());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
    file.close();
    QCOMPARE(::chmod(qPrintable(program()), 0755), 0);
}

void TestProgramPlace::companionIsBesideTheLauncher()
{
    const QString beside = QCoreApplication::applicationDirPath();
    QCOMPARE(companionProgram(QStringLiteral("launcher_tests")),
             beside + QStringLiteral("/launcher_tests"));
    // What is nowhere is missed where one looks first.
    QCOMPARE(companionProgram(QStringLiteral("missing")), beside + QStringLiteral("/missing"));
}

void TestProgramPlace::writableFolderTakesData()
{
    QVERIFY(takesData(m_folder->path()));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void TestProgramPlace::readOnlyFolderTakesNone()
{
    const auto mount = privatemounts::Mount::readOnly(m_folder->path());
    QVERIFY(mount.isMounted());
    QVERIFY(!takesData(m_folder->path()));
}

void TestProgramPlace::systemFolderTakesNone()
{
    QVERIFY(!takesData(QStringLiteral("/usr/bin")));
    QVERIFY(!takesData(m_folder->filePath(QStringLiteral("missing"))));
    // A link into the system's folders is one of them.
    const QString link = m_folder->filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(QStringLiteral("/usr/bin"), link));
    QVERIFY(!takesData(link));
}

void TestProgramPlace::folderOfTheUser_data()
{
    QTest::addColumn<QByteArray>("dataHome");
    QTest::addColumn<QByteArray>("home");
    QTest::addColumn<QString>("folder");
    QTest::newRow("data home") << QByteArray("/data") << QByteArray("/home/li")
                               << QStringLiteral("/data/scn4070a/ASRL-dev-tty1-INSTR");
    QTest::newRow("home") << QByteArray() << QByteArray("/home/li")
                          << QStringLiteral("/home/li/.local/share/scn4070a/ASRL-dev-tty1-INSTR");
    QTest::newRow("relative data home")
        << QByteArray("data") << QByteArray("/home/li")
        << QStringLiteral("/home/li/.local/share/scn4070a/ASRL-dev-tty1-INSTR");
    QTest::newRow("none") << QByteArray() << QByteArray() << QString();
}

void TestProgramPlace::folderOfTheUser()
{
    QFETCH(QByteArray, dataHome);
    QFETCH(QByteArray, home);
    const QByteArray oldDataHome = qgetenv("XDG_DATA_HOME");
    const QByteArray oldHome = qgetenv("HOME");
    qputenv("XDG_DATA_HOME", dataHome);
    qputenv("HOME", home);
    const QString folder = perUserFolder(QStringLiteral("ASRL/dev/tty1::INSTR"));
    qputenv("XDG_DATA_HOME", oldDataHome);
    qputenv("HOME", oldHome);
    QTEST(folder, "folder");
}

void TestProgramPlace::copyIsALinkOnTheSameDisk()
{
    const ProgramPlace place = copiedProgram(program(), home());
    QCOMPARE(place.errorText, QString());
    QCOMPARE(place.program, copy());
    QCOMPARE(place.folder, home());
    QCOMPARE(inodeOf(copy()), inodeOf(program()));
}

void TestProgramPlace::copyIsAFileOnAnotherDisk()
{
    QVERIFY(QDir().mkpath(home()));
    const auto mount = privatemounts::Mount::disk(home(), kSmallDisk);
    QVERIFY(mount.isMounted());
    const ProgramPlace place = copiedProgram(program(), home());
    QCOMPARE(place.errorText, QString());
    QCOMPARE(contentOf(copy()), contentOf(program()));
    QProcess process;
    process.start(place.program, QStringList());
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardOutput(), QByteArray("first\n"));
}

void TestProgramPlace::linkToTheProgramIsFollowed()
{
    const QString link = m_folder->filePath(QStringLiteral("program"));
    QVERIFY(QFile::link(program(), link));
    QCOMPARE(copiedProgram(link, home()).errorText, QString());
    QVERIFY(!QFileInfo(copy()).isSymLink());
    QCOMPARE(inodeOf(copy()), inodeOf(program()));
}

void TestProgramPlace::currentCopyStays()
{
    QVERIFY(QDir().mkpath(home()));
    const auto mount = privatemounts::Mount::disk(home(), kSmallDisk);
    QVERIFY(mount.isMounted());
    copiedProgram(program(), home());
    const ino_t before = inodeOf(copy());
    QCOMPARE(copiedProgram(program(), home()).errorText, QString());
    QCOMPARE(inodeOf(copy()), before);
}

void TestProgramPlace::olderCopyIsReplacedInOneStep()
{
    copiedProgram(program(), home());
    const QString data = home() + QStringLiteral("/A1_Data");
    QVERIFY(QDir().mkpath(data));
    const ino_t before = inodeOf(copy());
    // Of the same length: only the content tells.
    writeProgram("#!/bin/sh\necho newer\n");
    QCOMPARE(copiedProgram(program(), home()).errorText, QString());
    QCOMPARE(contentOf(copy()), contentOf(program()));
    QVERIFY(inodeOf(copy()) != before);
    QVERIFY(QDir(data).exists());
    QCOMPARE(QDir(home()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("program")});
}

void TestProgramPlace::interruptedCopyIsNoObstacle()
{
    QVERIFY(QDir().mkpath(home()));
    QFile half(copy() + QStringLiteral(".new"));
    QVERIFY(half.open(QIODevice::WriteOnly));
    half.write("#!/bin");
    half.close();
    QCOMPARE(copiedProgram(program(), home()).errorText, QString());
    QCOMPARE(contentOf(copy()), contentOf(program()));
    QVERIFY(!half.exists());
}

void TestProgramPlace::fullDiskIsTold()
{
    QVERIFY(QDir().mkpath(home()));
    const auto mount = privatemounts::Mount::disk(home(), kSmallDisk);
    QVERIFY(mount.isMounted());
    copiedProgram(program(), home());
    const QByteArray before = contentOf(copy());
    writeProgram(QByteArray("#!/bin/sh\n") + QByteArray(2 * kSmallDisk, '#'));
    const ProgramPlace place = copiedProgram(program(), home());
    QCOMPARE(place.errorText,
             QStringLiteral("无法将程序复制到 %1：磁盘已满。请检查磁盘空间和权限，或用 "
                            "XDG_DATA_HOME 指定其他位置。")
                 .arg(home()));
    QCOMPARE(place.program, QString());
    // What was there is still whole.
    QCOMPARE(contentOf(copy()), before);
    QVERIFY(!QFile::exists(copy() + QStringLiteral(".new")));
}

void TestProgramPlace::missingProgramIsTold()
{
    QVERIFY(QFile::remove(program()));
    QCOMPARE(copiedProgram(program(), home()).errorText,
             QStringLiteral("找不到程序 %1，请重新安装它。").arg(program()));
    QVERIFY(!QDir(home()).exists());
}

void TestProgramPlace::fileInTheWayIsTold()
{
    QFile file(home());
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString error = copiedProgram(program(), home()).errorText;
    QVERIFY2(error.startsWith(QStringLiteral("无法创建数据目录 %1：").arg(home())),
             qPrintable(error));
}

void TestProgramPlace::readOnlyHomeIsTold()
{
    QVERIFY(QDir().mkpath(home()));
    const auto mount = privatemounts::Mount::readOnly(home());
    QVERIFY(mount.isMounted());
    QCOMPARE(copiedProgram(program(), home()).errorText,
             QStringLiteral("无法将程序复制到 %1：文件系统是只读的。请检查磁盘空间和权限，或用 "
                            "XDG_DATA_HOME 指定其他位置。")
                 .arg(home()));
}

SCN_TEST_RUN(&privatemounts::run<TestProgramPlace, QCoreApplication>)
#include "test_programplace.moc"
