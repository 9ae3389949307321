#include "launcher/childclaim.h"
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

const QString kPort1 = QStringLiteral("TCPIP0::192.0.2.1::5025::SOCKET");
const QString kPort2 = QStringLiteral("TCPIP0::192.0.2.2::5025::SOCKET");

} // namespace

/// What a child gets for itself, and what it is refused.
class TestChildClaim : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstChildRunsBesideTheProgram();
    void secondChildRunsInAFolderOfTheUser();
    void readOnlyPlaceLeadsToTheUser();
    void heldInstrumentIsRefusedByName();
    void refusedClaimLeavesNothing();
    void childrenOfOneNameGetFoldersOfTheirOwn();
    void releasedClaimCanBeTakenAgain();
    void withoutAHomeItSaysSo();
    void failedCopyIsTold();
    void missingProgramIsTold();

private:
    QString installed() const { return m_folder->filePath(QStringLiteral("installed")); }
    QString program() const { return installed() + QStringLiteral("/scn4070a"); }
    QString locks() const { return m_folder->filePath(QStringLiteral("locks")); }
    QString userFolder(const QString& name) const
    {
        return m_folder->filePath(QStringLiteral("share/scn4070a/") + name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_oldDataHome;
};

void TestChildClaim::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(installed()));
    QVERIFY(QDir().mkpath(locks()));
    QFile file(program());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n");
    file.close();
    QCOMPARE(::chmod(qPrintable(program()), 0755), 0);
    m_oldDataHome = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", m_folder->filePath(QStringLiteral("share")).toUtf8());
}

void TestChildClaim::cleanup()
{
    qputenv("XDG_DATA_HOME", m_oldDataHome);
}

void TestChildClaim::firstChildRunsBesideTheProgram()
{
    ChildClaim claim(locks());
    QVERIFY2(claim.take(program(), kPort1, kPort1), qPrintable(claim.errorText()));
    QCOMPARE(claim.program(), program());
    QCOMPARE(claim.folder(), installed());
    QVERIFY(claim.isBesideProgram());
    QVERIFY(!QDir(m_folder->filePath(QStringLiteral("share"))).exists());
}

void TestChildClaim::secondChildRunsInAFolderOfTheUser()
{
    ChildClaim first(locks());
    ChildClaim second(locks());
    QVERIFY(first.take(program(), kPort1, kPort1));
    QVERIFY2(second.take(program(), kPort2, kPort2), qPrintable(second.errorText()));
    QCOMPARE(second.folder(), userFolder(QStringLiteral("TCPIP0-192.0.2.2-5025-SOCKET")));
    QCOMPARE(second.program(), second.folder() + QStringLiteral("/scn4070a"));
    QVERIFY(!second.isBesideProgram());
    QVERIFY(QFileInfo(second.program()).isExecutable());
}

void TestChildClaim::readOnlyPlaceLeadsToTheUser()
{
    const auto mount = privatemounts::Mount::readOnly(installed());
    QVERIFY(mount.isMounted());
    ChildClaim claim(locks());
    QVERIFY2(claim.take(program(), kPort1, kPort1), qPrintable(claim.errorText()));
    QCOMPARE(claim.folder(), userFolder(QStringLiteral("TCPIP0-192.0.2.1-5025-SOCKET")));
}

void TestChildClaim::heldInstrumentIsRefusedByName()
{
    ChildClaim first(locks());
    ChildClaim second(locks());
    QVERIFY(first.take(program(), kPort1, kPort1));
    first.noteChild(1);
    QVERIFY(!second.take(program(), QStringLiteral("tcpip::192.0.2.1::5025::socket"), kPort1));
    const QString text = second.errorText();
    QVERIFY2(text.startsWith(QStringLiteral("仪器 tcpip::192.0.2.1::5025::socket 正被 "
                                            "launcher_tests（进程 %1，")
                                 .arg(QCoreApplication::applicationPid())),
             qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral("目录 %1）").arg(installed())), qPrintable(text));
    QCOMPARE(second.program(), QString());
}

void TestChildClaim::refusedClaimLeavesNothing()
{
    ChildClaim first(locks());
    QVERIFY(first.take(program(), kPort1, kPort1));
    ChildClaim second(locks());
    QVERIFY(!second.take(program(), kPort1, kPort1));
    QVERIFY(!QDir(m_folder->filePath(QStringLiteral("share"))).exists());
    first.release();
    QCOMPARE(QDir(locks()).entryList(QDir::Files), QStringList());
}

void TestChildClaim::childrenOfOneNameGetFoldersOfTheirOwn()
{
    const QString name = QStringLiteral("simulator");
    ChildClaim first(locks());
    ChildClaim second(locks());
    ChildClaim third(locks());
    QVERIFY(first.take(program(), QStringLiteral("TCPIP::127.0.0.1::1::SOCKET"), name));
    QVERIFY(second.take(program(), QStringLiteral("TCPIP::127.0.0.1::2::SOCKET"), name));
    QVERIFY(third.take(program(), QStringLiteral("TCPIP::127.0.0.1::3::SOCKET"), name));
    QCOMPARE(first.folder(), installed());
    QCOMPARE(second.folder(), userFolder(QStringLiteral("simulator")));
    QCOMPARE(third.folder(), userFolder(QStringLiteral("simulator-2")));
}

void TestChildClaim::releasedClaimCanBeTakenAgain()
{
    ChildClaim first(locks());
    ChildClaim second(locks());
    QVERIFY(first.take(program(), kPort1, kPort1));
    first.release();
    QVERIFY(second.take(program(), kPort1, kPort1));
    QCOMPARE(second.folder(), installed());
    QCOMPARE(first.program(), QString());
}

void TestChildClaim::withoutAHomeItSaysSo()
{
    const QByteArray home = qgetenv("HOME");
    qputenv("XDG_DATA_HOME", "");
    qputenv("HOME", "");
    const auto mount = privatemounts::Mount::readOnly(installed());
    ChildClaim claim(locks());
    const bool isTaken = claim.take(program(), kPort1, kPort1);
    qputenv("HOME", home);
    QVERIFY(!isTaken);
    QCOMPARE(
        claim.errorText(),
        QStringLiteral(
            "程序目录不可写，而当前用户没有主目录，数据无处存放。请设置 HOME 或 XDG_DATA_HOME。"));
    QCOMPARE(QDir(locks()).entryList(QDir::Files), QStringList());
}

void TestChildClaim::failedCopyIsTold()
{
    const QString share = m_folder->filePath(QStringLiteral("share"));
    QVERIFY(QDir().mkpath(share));
    const auto installedMount = privatemounts::Mount::readOnly(installed());
    const auto shareMount = privatemounts::Mount::readOnly(share);
    ChildClaim claim(locks());
    QVERIFY(!claim.take(program(), kPort1, kPort1));
    QCOMPARE(claim.errorText(),
             QStringLiteral("无法创建数据目录 %1：文件系统是只读的。请检查磁盘空间和权限，或用 "
                            "XDG_DATA_HOME 指定其他位置。")
                 .arg(userFolder(QStringLiteral("TCPIP0-192.0.2.1-5025-SOCKET"))));
}

void TestChildClaim::missingProgramIsTold()
{
    ChildClaim claim(locks());
    QVERIFY(!claim.take(installed() + QStringLiteral("/none"), kPort1, kPort1));
    QCOMPARE(claim.errorText(),
             QStringLiteral("找不到程序 %1/none，请重新安装它。").arg(installed()));
    QCOMPARE(QDir(locks()).entryList(QDir::Files), QStringList());
}

SCN_TEST_RUN(&privatemounts::run<TestChildClaim, QCoreApplication>)
#include "test_childclaim.moc"
