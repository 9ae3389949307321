#include "storage/connectionsetup.h"

#include "storage/connectionlock.h"
#include "storage/managedquery.h"
#include "storage/querymanager.h"
#include "storage/shardnaming.h"
#include "storage/storewaits.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSqlError>
#include <QUrl>
#include <QUuid>

namespace scn {

namespace {

constexpr int kPathHashLength = 8;
constexpr int kUuidLength = 16;
constexpr int kDateKeyLength = 8;
constexpr int kReadOnlyCacheKb = 512;

const QString kReadOnlyOption = QStringLiteral("QSQLITE_OPEN_READONLY");
const QString kJournalDelete = QStringLiteral("PRAGMA journal_mode = DELETE");

QString newConnectionName(const QString& path)
{
    const QByteArray hash =
        QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5).toHex();
    QString unique = QUuid::createUuid().toString();
    unique.remove(QLatin1Char('-'));
    return kConnectionNamePrefix + QString::fromLatin1(hash.left(kPathHashLength)) +
           QLatin1Char('_') + unique.left(kUuidLength);
}

QString busyTimeoutOption()
{
    return QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(storewaits::kLockPatience.count());
}

/// The file as SQLite's URI.
QString readOnlyUri(const QString& path)
{
    const QFileInfo file(path);
    const bool hasWal = QFileInfo(path + QStringLiteral("-wal")).size() > 0;
    const bool isFixed = !hasWal && !QFileInfo(file.absolutePath()).isWritable();
    return QStringLiteral("file:") +
           QString::fromLatin1(QUrl::toPercentEncoding(file.absoluteFilePath(), "/")) +
           (isFixed ? QStringLiteral("?immutable=1") : QStringLiteral("?mode=ro"));
}

/// Reports why a file could not be opened.
void tellFailure(const QString& path, const QString& error)
{
    qCritical() << "打开数据库失败:" << path << "错误:" << error;
}

/// Sets the page size of a file that is still empty, which must come before the journal mode.
void choosePages(const QSqlDatabase& database, const QString& path)
{
    if (QFileInfo(path).size() == 0) {
        execPragmaChecked(database, QStringLiteral("PRAGMA page_size = %1").arg(kDayFilePageBytes),
                          {});
    }
}

void setUpWriter(const QSqlDatabase& database)
{
    if (execPragmaChecked(database, QStringLiteral("PRAGMA journal_mode = WAL"),
                          QStringLiteral("WAL"))) {
        execPragmaChecked(database, QStringLiteral("PRAGMA synchronous = NORMAL"),
                          QStringLiteral("NORMAL"));
    } else {
        execPragmaChecked(database, kJournalDelete, QStringLiteral("DELETE"));
        execPragmaChecked(database, QStringLiteral("PRAGMA synchronous = FULL"),
                          QStringLiteral("FULL"));
    }
    execPragmaChecked(database, QStringLiteral("PRAGMA foreign_keys = ON"), QStringLiteral("1"));
}

void setUpReader(const QSqlDatabase& database)
{
    if (execPragmaChecked(database, kJournalDelete, QStringLiteral("DELETE"))) {
        execPragmaChecked(database, QStringLiteral("PRAGMA wal_checkpoint(FULL)"),
                          QStringLiteral("0"));
    }
    execPragmaChecked(database, QStringLiteral("PRAGMA synchronous = OFF"), QStringLiteral("OFF"));
    execPragmaChecked(database, QStringLiteral("PRAGMA foreign_keys = ON"), QStringLiteral("1"));
}

} // namespace

QSqlDatabase createConnection(const QString& path)
{
    if (path.isEmpty()) {
        qCritical() << "数据库路径不能为空!";
        return {};
    }
    const QDir directory = QFileInfo(path).absoluteDir();
    if (!directory.exists() && !directory.mkpath(QStringLiteral("."))) {
        qCritical() << "创建数据库目录失败:" << directory.absolutePath();
        return {};
    }
    const QString name = newConnectionName(path);
    if (QSqlDatabase::contains(name)) {
        QSqlDatabase::removeDatabase(name);
        qDebug() << "连接名已存在，提前移除：" << name;
    }
    QString error;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(path);
        database.setConnectOptions(busyTimeoutOption());
        if (database.open()) {
            choosePages(database, path);
            if (digitsOfBaseName(path, kDateKeyLength) == todayKey()) {
                setUpWriter(database);
            } else {
                setUpReader(database);
            }
            return database;
        }
        error = database.lastError().text();
    }
    tellFailure(path, error);
    QSqlDatabase::removeDatabase(name);
    return {};
}

QSqlDatabase createReadOnlyConnection(const QString& path)
{
    const QString name = newConnectionName(path);
    QString error;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(readOnlyUri(path));
        database.setConnectOptions(kReadOnlyOption + QStringLiteral(";QSQLITE_OPEN_URI;") +
                                   busyTimeoutOption());
        if (database.open()) {
            // Files are read through once, and an export leaves thirty of them open.
            ManagedQuery(database).exec(
                QStringLiteral("PRAGMA cache_size = -%1").arg(kReadOnlyCacheKb));
            return database;
        }
        error = database.lastError().text();
    }
    tellFailure(path, error);
    QSqlDatabase::removeDatabase(name);
    return {};
}

bool isReadOnly(const QSqlDatabase& database)
{
    return database.connectOptions().startsWith(kReadOnlyOption);
}

bool execPragmaChecked(const QSqlDatabase& database, const QString& sql, const QString& expected)
{
    ManagedQuery query(database);
    if (!query.exec(sql)) {
        qWarning() << "执行PRAGMA失败：" << sql << " 错误：" << query.errorText();
        return false;
    }
    if (expected.isEmpty() || !query.next()) {
        return true;
    }
    const QString actual = query.value(0).toString();
    if (actual.toLower() != expected.toLower()) {
        qWarning() << "PRAGMA结果不匹配：" << sql << " 预期：" << expected << " 实际：" << actual;
        return false;
    }
    return true;
}

bool validateConnection(const QSqlDatabase& database)
{
    if (!database.isOpen()) {
        return false;
    }
    ManagedQuery query(database);
    if (!query.exec(QStringLiteral("SELECT 1"))) {
        qDebug() << "连接验证失败：" << database.connectionName() << "错误：" << query.errorText();
        return false;
    }
    return query.next() && query.value(0).toInt() == 1;
}

void setBusyTimeout(const QSqlDatabase& database, std::chrono::milliseconds patience)
{
    ManagedQuery(database).exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(patience.count()));
}

bool usesWal(const QSqlDatabase& database)
{
    ManagedQuery query(database);
    return query.exec(QStringLiteral("PRAGMA journal_mode")) && query.next() &&
           query.value(0).toString() == QLatin1String("wal");
}

void truncateWal(const QSqlDatabase& database)
{
    if (isReadOnly(database)) {
        return;
    }
    ManagedQuery(database).exec(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
}

void foldAndClose(QSqlDatabase& database)
{
    const ConnectionLocker locker(database);
    if (!database.isOpen()) {
        return;
    }
    // A query started during the wait would block the switch of the journal.
    QueryManager::instance().finishQueries(database.connectionName());
    truncateWal(database);
    if (!isReadOnly(database)) {
        ManagedQuery(database).exec(kJournalDelete);
    }
    database.close();
}

} // namespace scn
