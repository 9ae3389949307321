#include "lockingprocess.h"

#include <QCoreApplication>

#include <sqlite3.h>

#include <cstdio>

namespace {

const QString kOption = QStringLiteral("--hold-lock");
constexpr int kStartTimeoutMs = 20000;
constexpr int kEndTimeoutMs = 60000;
constexpr int kBusyMs = 5000;

} // namespace

LockingProcess::LockingProcess(const QString& path, Kind kind)
{
    m_process.start(
        QCoreApplication::applicationFilePath(),
        {testprogram::runningTest(), kOption, path,
         kind == Writing ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("BEGIN EXCLUSIVE")});
    m_held = m_process.waitForReadyRead(kStartTimeoutMs) && m_process.readLine() == "locked\n";
}

LockingProcess::~LockingProcess()
{
    m_process.kill();
    m_process.waitForFinished(kEndTimeoutMs);
}

void LockingProcess::end()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished(kEndTimeoutMs);
}

bool LockingProcess::isMeant(int argc, char** argv)
{
    return argc > 1 && QString::fromLocal8Bit(argv[1]) == kOption;
}

int LockingProcess::playLock(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    sqlite3* database = nullptr;
    sqlite3_open(arguments.value(2).toUtf8().constData(), &database);
    sqlite3_busy_timeout(database, kBusyMs);
    const QByteArray sql = arguments.value(3).toUtf8();
    if (sqlite3_exec(database, sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        std::printf("%s\n", sqlite3_errmsg(database));
        return 1;
    }
    std::printf("locked\n");
    std::fflush(stdout);
    std::getchar(); // until the test closes the channel
    sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(database);
    return 0;
}
