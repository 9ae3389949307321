#include "storage/lockedquery.h"

#include "storage/lockpatience.h"
#include "storage/sqlitestatement.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlRecord>
#include <QSqlResult>

#include <sqlite3.h>

namespace scn {

namespace {

/// The text of a failure as Qt's driver gives it.
QString messageOf(sqlite3_stmt* statement)
{
    return QString::fromUtf8(sqlite3_errmsg(sqlite3_db_handle(statement))) +
           QStringLiteral(" Unable to fetch row");
}

void bindNumber(sqlite3_stmt* statement, int position, const QVariant& value)
{
    if (value.type() == QVariant::Double) {
        sqlite3_bind_double(statement, position, value.toDouble());
    } else {
        sqlite3_bind_int64(statement, position, value.toLongLong());
    }
}

QSqlQuery makeQuery(const QSqlDatabase& database, const std::shared_ptr<ConnectionMutex>& mutex)
{
    const ConnectionLocker locker(mutex);
    return QSqlQuery(database);
}

} // namespace

LockedQuery::LockedQuery(const QSqlDatabase& database)
    : m_connectionName(database.connectionName())
    , m_mutex(connectionMutex(m_connectionName))
    , m_query(makeQuery(database, m_mutex))
{
}

LockedQuery::~LockedQuery()
{
    const ConnectionLocker locker(m_mutex);
    clear();
    m_query = QSqlQuery(static_cast<QSqlResult*>(nullptr)); // its end, too, is under the lock
}

void LockedQuery::setForwardOnly(bool forwardOnly)
{
    const ConnectionLocker locker(m_mutex);
    m_query.setForwardOnly(forwardOnly);
}

bool LockedQuery::prepare(const QString& sql)
{
    const ConnectionLocker locker(m_mutex);
    if (!driverOpen()) {
        return fail(QStringLiteral("database not open"));
    }
    m_prepared = m_query.prepare(sql);
    return m_prepared || failWithQueryError();
}

bool LockedQuery::exec()
{
    const ConnectionLocker locker(m_mutex);
    if (!preparedUnlocked()) {
        return fail(QStringLiteral("nothing prepared on an open database"));
    }
    m_samplesEnded = false;
    if (!m_query.exec()) {
        return failWithQueryError();
    }
    return true;
}

bool LockedQuery::exec(const QString& sql)
{
    const ConnectionLocker locker(m_mutex);
    if (!driverOpen()) {
        return fail(QStringLiteral("database not open"));
    }
    m_prepared = m_query.exec(sql);
    return m_prepared || failWithQueryError();
}

bool LockedQuery::execWith(std::initializer_list<QVariant> values)
{
    const ConnectionLocker locker(m_mutex);
    int position = 0;
    for (const QVariant& value : values) {
        m_query.bindValue(position++, value);
    }
    return exec();
}

bool LockedQuery::runKept(std::initializer_list<QVariant> numbers)
{
    const ConnectionLocker locker(m_mutex);
    sqlite3_stmt* const statement = preparedUnlocked() ? statementOf(m_query) : nullptr;
    if (!statement) {
        return execWith(numbers);
    }
    int position = 0;
    for (const QVariant& number : numbers) {
        bindNumber(statement, ++position, number);
    }
    const int result = sqlite3_step(statement);
    if (result == SQLITE_DONE) {
        sqlite3_reset(statement);
        return true;
    }
    const QString text = messageOf(statement);
    sqlite3_reset(statement);
    return failWithCode(result, text);
}

bool LockedQuery::run(const QString& sql, std::initializer_list<QVariant> values)
{
    const ConnectionLocker locker(m_mutex);
    return prepare(sql) && execWith(values);
}

bool LockedQuery::execColumns(const QVector<QVariantList>& columns)
{
    const ConnectionLocker locker(m_mutex);
    if (!preparedUnlocked()) {
        return fail(QStringLiteral("nothing prepared on an open database"));
    }
    for (const QVariantList& column : columns) {
        m_query.addBindValue(QVariant(column));
    }
    if (!m_query.execBatch(QSqlQuery::ValuesAsRows)) {
        return failWithQueryError();
    }
    return true;
}

bool LockedQuery::next()
{
    const ConnectionLocker locker(m_mutex);
    return driverOpen() && nextRow();
}

QVariant LockedQuery::value(int column) const
{
    const ConnectionLocker locker(m_mutex);
    return m_query.isValid() && driverOpen() ? m_query.value(column) : QVariant();
}

QVariant LockedQuery::lastInsertId() const
{
    const ConnectionLocker locker(m_mutex);
    return driverOpen() ? m_query.lastInsertId() : QVariant();
}

void LockedQuery::finish()
{
    const ConnectionLocker locker(m_mutex);
    if (m_query.isActive()) {
        m_query.finish();
    }
}

void LockedQuery::clear()
{
    const ConnectionLocker locker(m_mutex);
    finish();
    m_prepared = false;
    if (m_query.driver()) { // clearing a query whose driver has gone would crash
        m_query.clear();
    }
}

bool LockedQuery::isUsable() const
{
    const ConnectionLocker locker(m_mutex);
    return preparedUnlocked();
}

bool LockedQuery::isInTransaction() const
{
    const ConnectionLocker locker(m_mutex);
    sqlite3* const connection = driverOpen() ? connectionOf(*m_query.driver()) : nullptr;
    return connection && sqlite3_get_autocommit(connection) == 0;
}

QString LockedQuery::errorText() const
{
    return m_errorText;
}

bool LockedQuery::driverOpen() const
{
    const QSqlDriver* driver = m_query.driver();
    return driver && driver->isOpen();
}

bool LockedQuery::preparedUnlocked() const
{
    // Executing a query ended from outside would report success and do nothing.
    return m_prepared && driverOpen() && !m_query.lastQuery().isEmpty();
}

bool LockedQuery::nextRow()
{
    if (m_query.next()) {
        return true;
    }
    if (m_query.lastError().isValid()) {
        failWithQueryError();
    }
    return false;
}

int LockedQuery::fetchSamples(int limit, SampleColumn& samples)
{
    m_mutex->letOthersIn();
    return stepSamples(limit, samples, FailureText::Result);
}

int LockedQuery::fetchSamplesAtOnce(int limit, SampleColumn& samples)
{
    return stepSamples(limit, samples, FailureText::Message);
}

int LockedQuery::stepSamples(int limit, SampleColumn& samples, FailureText text)
{
    const ConnectionLocker locker(m_mutex);
    if (!driverOpen()) {
        return 0;
    }
    int count = 0;
    if (limit > 0 && !m_samplesEnded &&
        m_query.at() == QSql::BeforeFirstRow) { // Qt has stepped to the first row
        if (!nextRow()) {
            m_samplesEnded = true;
            return 0;
        }
        const bool hasTime = m_query.record().count() > 1;
        samples.push_back({hasTime ? m_query.value(0).toLongLong() : 0,
                           m_query.value(hasTime ? 1 : 0).toDouble()});
        count = 1;
    }
    sqlite3_stmt* const statement = statementOf(m_query);
    const bool hasTime = statement && sqlite3_column_count(statement) > 1;
    while (count < limit && !m_samplesEnded) {
        const int result = statement ? sqlite3_step(statement) : SQLITE_MISUSE;
        if (result == SQLITE_ROW) {
            samples.push_back({hasTime ? sqlite3_column_int64(statement, 0) : 0,
                               sqlite3_column_double(statement, hasTime ? 1 : 0)});
            ++count;
            continue;
        }
        m_samplesEnded = true;
        if (result != SQLITE_DONE) {
            failWithCode(result, statement && text == FailureText::Message
                                     ? messageOf(statement)
                                     : QString::fromUtf8(sqlite3_errstr(result)));
        }
    }
    return count;
}

bool LockedQuery::fail(const QString& text)
{
    m_errorText = text;
    m_errorCode = 0;
    return false;
}

bool LockedQuery::failWithQueryError()
{
    const QSqlError error = m_query.lastError();
    return failWithCode(error.nativeErrorCode().toInt(), error.text());
}

bool LockedQuery::failWithCode(int code, const QString& text)
{
    m_errorText = text;
    m_errorCode = code & kPrimaryCodeMask;
    if (m_errorCode == kBusyCode) {
        LockPatience::waitedInVain(m_mutex, m_query.driver());
    }
    return false;
}

} // namespace scn
