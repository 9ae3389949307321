#include "support/postgresserver.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <pwd.h>
#include <signal.h>
#include <unistd.h>

namespace {

constexpr int kPatienceMs = 60000;

/// The package's own user, since the server refuses to run as root.
const QString kServerUser = QStringLiteral("postgres");

QString outputOf(const QStringList& command)
{
    QProcess process;
    process.start(command.first(), command.mid(1), QIODevice::ReadOnly);
    process.waitForFinished(kPatienceMs);
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    const bool isFine = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return isFine ? QString::fromUtf8(process.readAllStandardOutput()).trimmed()
                  : QStringLiteral("error: ") + errors.trimmed();
}

} // namespace

QString PostgresServer::programDirectory()
{
    const QDir versions(QStringLiteral("/usr/lib/postgresql"));
    const QStringList names = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (auto name = names.crbegin(); name != names.crend(); ++name) {
        const QString programs = versions.filePath(*name + QStringLiteral("/bin"));
        if (QFile::exists(programs + QStringLiteral("/initdb"))) {
            return programs;
        }
    }
    return {};
}

PostgresServer::PostgresServer(Writing writing)
    : m_writing(writing)
    , m_directory(QStringLiteral("/tmp/scn-postgres-XXXXXX"))
{
    const passwd* const user = ::getpwnam(qPrintable(kServerUser));
    if (::geteuid() == 0 && user) {
        const QByteArray path = QFile::encodeName(m_directory.path());
        if (::chown(path.constData(), user->pw_uid, user->pw_gid) != 0) {
            qWarning("cannot give %s away", path.constData());
        }
    }
    const QString made =
        outputOf(asServerUser(QStringLiteral("initdb")) +
                 QStringList{QStringLiteral("-U"), QStringLiteral("scn"), QStringLiteral("-A"),
                             QStringLiteral("trust"), QStringLiteral("-E"), QStringLiteral("UTF8"),
                             QStringLiteral("--locale=C"), QStringLiteral("--no-sync"),
                             QStringLiteral("-D"), m_directory.filePath(QStringLiteral("data"))});
    if (made.startsWith(QLatin1String("error: "))) {
        qWarning("%s", qPrintable(made));
    }
    start();
}

PostgresServer::~PostgresServer()
{
    freeze(false);
    stop();
}

QStringList PostgresServer::asServerUser(const QString& program) const
{
    // The server must not outlive a test that is killed.
    QStringList command{QStringLiteral("setpriv"), QStringLiteral("--pdeathsig"),
                        QStringLiteral("QUIT")};
    if (::geteuid() == 0) {
        command += {QStringLiteral("--reuid"), kServerUser, QStringLiteral("--regid"), kServerUser,
                    QStringLiteral("--clear-groups")};
    }
    return command << programDirectory() + QLatin1Char('/') + program;
}

bool PostgresServer::isUp() const
{
    return psql(QStringLiteral("SELECT 1")) == QLatin1String("1");
}

bool PostgresServer::start()
{
    QStringList settings{QStringLiteral("listen_addresses="),
                         QStringLiteral("dynamic_shared_memory_type=mmap"),
                         QStringLiteral("unix_socket_directories=") + m_directory.path()};
    if (m_writing == Writing::Quick) {
        settings << QStringLiteral("fsync=off");
    }
    QStringList command = asServerUser(QStringLiteral("postgres"));
    command << QStringLiteral("-D") << m_directory.filePath(QStringLiteral("data"));
    for (const QString& setting : settings) {
        command << QStringLiteral("-c") << setting;
    }
    m_process.setStandardOutputFile(m_directory.filePath(QStringLiteral("log")), QIODevice::Append);
    m_process.setStandardErrorFile(m_directory.filePath(QStringLiteral("log")), QIODevice::Append);
    m_process.setWorkingDirectory(m_directory.path());
    m_process.start(command.first(), command.mid(1));
    return QTest::qWaitFor([this] { return isUp(); }, kPatienceMs);
}

void PostgresServer::stop()
{
    if (m_process.state() != QProcess::NotRunning) {
        ::kill(static_cast<pid_t>(m_process.processId()), SIGQUIT);
        m_process.waitForFinished(kPatienceMs);
    }
}

void PostgresServer::freeze(bool isFrozen)
{
    // The sessions are processes of their own, in their own groups.
    const QString pids = outputOf(
        {QStringLiteral("ps"), QStringLiteral("--no-headers"), QStringLiteral("-o"),
         QStringLiteral("pid"), QStringLiteral("--ppid"), QString::number(m_process.processId())});
    const int signal = isFrozen ? SIGSTOP : SIGCONT;
    if (m_process.processId() > 0) {
        ::kill(static_cast<pid_t>(m_process.processId()), signal);
    }
    for (const QString& pid : pids.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (pid.trimmed().toInt() > 0) {
            ::kill(pid.trimmed().toInt(), signal);
        }
    }
}

void PostgresServer::killSessions()
{
    const QStringList pids = rows(QStringLiteral(
        "SELECT pid FROM pg_stat_activity WHERE application_name = 'scn4070a-store'"));
    for (const QString& pid : pids) {
        if (pid.toInt() > 0) {
            ::kill(pid.toInt(), SIGKILL);
        }
    }
}

QString PostgresServer::address(const QString& database, const QString& role) const
{
    return QStringLiteral("postgresql://%1@/%2?host=%3").arg(role, database, m_directory.path());
}

QString PostgresServer::psql(const QString& sql, const QString& database) const
{
    return outputOf({QStringLiteral("psql"), QStringLiteral("-XAtq"), address(database),
                     QStringLiteral("-v"), QStringLiteral("ON_ERROR_STOP=1"), QStringLiteral("-c"),
                     sql});
}

QStringList PostgresServer::rows(const QString& sql) const
{
    return psql(sql).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}
