#include "storetool/forward/dayfileconnection.h"

#include <QFileInfo>
#include <QUrl>

#include <sqlite3.h>

namespace scnstore {

namespace {

constexpr int kPrimaryCode = 0xff;

} // namespace

void StatementEnd::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

DayFileConnection::DayFileConnection(sqlite3* database, Mode mode)
    : m_database(database)
    , m_mode(mode)
{
}

DayFileConnection::~DayFileConnection()
{
    sqlite3_close_v2(m_database);
}

std::unique_ptr<DayFileConnection> DayFileConnection::open(const QString& path, bool isIdle,
                                                           bool* isDamaged)
{
    *isDamaged = false;
    // Not possible with a file that has a log.
    auto connection = connect(path, "mode=ro&nolock=1", Mode::Unlocked);
    if (!connection->isReadable() && !connection->sawDamage()) {
        const bool hasLog = QFileInfo(path + QLatin1String("-wal")).size() > 0;
        if (!isIdle) {
            connection = connect(path, "mode=ro", Mode::Shared);
        } else if (hasLog) {
            // With the file for itself, SQLite keeps the index of the log in memory.
            connection = connect(path, "mode=ro&vfs=unix-none", Mode::Still);
            connection->run("PRAGMA locking_mode = EXCLUSIVE");
        } else {
            connection = connect(path, "immutable=1", Mode::Still);
        }
    }
    // A file replaced in the meantime would be read with the log of the other one.
    if (connection->isReadable() &&
        (connection->mode() != Mode::Shared || !connection->hasMoved())) {
        return connection;
    }
    *isDamaged = connection->sawDamage();
    return nullptr;
}

bool DayFileConnection::isReadable() const
{
    return number("SELECT count(*) FROM sqlite_master") >= 0;
}

std::unique_ptr<DayFileConnection> DayFileConnection::connect(const QString& path,
                                                              const char* parameters, Mode mode)
{
    const QByteArray uri = "file:" + QUrl::toPercentEncoding(path, "/") + '?' + parameters;
    sqlite3* database = nullptr;
    sqlite3_open_v2(uri.constData(), &database,
                    SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
    std::unique_ptr<DayFileConnection> connection(new DayFileConnection(database, mode));
    // The log is its writer's to fold in, at the close as well.
    sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // The ends of the tables of 60 curves; hundreds of files may be open.
    connection->run("PRAGMA cache_size = -512");
    return connection;
}

bool DayFileConnection::run(const char* sql) const
{
    return sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

Statement DayFileConnection::prepare(const QByteArray& sql) const
{
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(m_database, sql.constData(), sql.size(), &statement, nullptr);
    return Statement(statement);
}

qint64 DayFileConnection::number(const QByteArray& sql) const
{
    const Statement statement = prepare(sql);
    return statement && sqlite3_step(statement.get()) == SQLITE_ROW
               ? sqlite3_column_int64(statement.get(), 0)
               : -1;
}

bool DayFileConnection::hasMoved() const
{
    int moved = 0;
    sqlite3_file_control(m_database, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

bool DayFileConnection::sawDamage() const
{
    const int code = sqlite3_extended_errcode(m_database) & kPrimaryCode;
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

bool DayFileConnection::sawMisfit() const
{
    return sqlite3_extended_errcode(m_database) == SQLITE_ERROR;
}

bool DayFileConnection::sawLog() const
{
    return m_mode == Mode::Unlocked &&
           (sqlite3_extended_errcode(m_database) & kPrimaryCode) == SQLITE_CANTOPEN;
}

} // namespace scnstore
