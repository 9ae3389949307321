#include "export/curvecursor.h"

#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/managedquery.h"
#include "storage/shardnaming.h"

#include <QDateTime>
#include <QDebug>
#include <QFileInfo>
#include <QRegularExpression>

#include <utility>

namespace scn {

namespace {

/// The first run of eight digits in a table's name is the date of its batch.
QDate dateInName(const QString& table)
{
    static const QRegularExpression eightDigits(QStringLiteral("(\\d{8})"));
    const QRegularExpressionMatch match = eightDigits.match(table);
    return QDate::fromString(match.captured(1), QStringLiteral("yyyyMMdd"));
}

QString quotedTable(QString table)
{
    return QLatin1Char('`') + table.replace(QLatin1Char('`'), QLatin1String("``")) +
           QLatin1Char('`');
}

} // namespace

CurveCursor::CurveCursor(CurveDataDB& store, int curveId, QVector<BatchTable> tables, qint64 start,
                         qint64 end, Columns columns)
    : m_store(store)
    , m_curveId(curveId)
    , m_tables(std::move(tables))
    , m_start(start)
    , m_end(end)
    , m_columns(store.isReadOnly() ? TimesAndValues : columns)
    , m_rests(store.isReadOnly())
{
    if (m_tables.isEmpty()) {
        qWarning() << "[Cursor初始化] 曲线" << m_curveId << "未获取到任何分片表";
    } else {
        m_valid = openNextTable();
    }
}

CurveCursor::~CurveCursor()
{
    release();
}

void CurveCursor::read(SampleColumn& column, std::size_t limit)
{
    while (m_valid && column.size() < limit) {
        column.push_back(m_current);
        readTable(column, limit);
    }
}

/// Reads past the current sample within its table; the last one read becomes current. At the end of
/// the table, the next one's first sample does.
void CurveCursor::readTable(SampleColumn& column, std::size_t limit)
{
    // What is read from a deleted or replaced file is not what the store holds.
    if (fileIdentity(m_path) != m_file) {
        m_valid = failToRead(QStringLiteral("the file has gone or was replaced"));
        return;
    }
    if (m_isResting && !resume()) {
        m_valid = false;
        return;
    }
    const auto wanted = static_cast<int>(limit - column.size()) + 1;
    if (m_query->fetchSamples(wanted, column) == wanted) {
        m_current = column.back();
        column.pop_back();
        rest();
    } else if (!m_query->isUsable() || !m_query->errorText().isEmpty()) {
        m_valid = failToRead(m_query->errorText());
    } else {
        m_valid = openNextTable();
    }
}

bool CurveCursor::openNextTable()
{
    release();
    while (m_nextTable < m_tables.size() && !m_failed) {
        if (openTable(m_tables.at(m_nextTable++))) {
            return true;
        }
        release();
    }
    if (!m_failed) {
        qDebug() << "[初始化查询] 曲线" << m_curveId << "所有分片表已处理完毕";
    }
    return false;
}

/// Makes the table's first sample current. False if the table is skipped, or if reading failed.
bool CurveCursor::openTable(const BatchTable& table)
{
    if (!isInPlace(table)) {
        return false;
    }
    m_path = table.path;
    m_file = table.file;
    m_connection = m_store.openDb(table.path);
    if (!m_connection || !m_connection->isOpen()) {
        qWarning() << "[初始化查询] 打开数据库" << table.path << "失败";
        return fail();
    }
    // Another file in its place has other tables.
    if (fileIdentity(m_path) != m_file) {
        return failToRead(QStringLiteral("the file was replaced"));
    }
    return startQuery(table) && takeFirstRow(table);
}

/// Whether the listing file exists and has the table. A name without a date, or with the date of a
/// day without a file, is looked up in the file itself: a table of readings from the future is in
/// the file of the day they arrived.
bool CurveCursor::isInPlace(const BatchTable& table)
{
    const QDate date = dateInName(table.name);
    bool lookedUp = false;
    if (!date.isValid()) {
        qWarning() << "[初始化查询] 分片表" << table.name << "未提取到日期，启动兜底方案";
        lookedUp = true;
    } else {
        const QString path = m_store.dbPathForTime(date.startOfDay().toMSecsSinceEpoch());
        lookedUp = !QFileInfo::exists(path);
        if (lookedUp) {
            qWarning() << "[初始化查询] 日期" << date.toString(QStringLiteral("yyyyMMdd"))
                       << "对应的数据库" << path << "不存在，启动兜底方案";
        }
    }
    const bool fileExists = QFileInfo::exists(table.path);
    if (fileExists && (!lookedUp || isListedIn(table))) {
        return true;
    }
    qWarning() << "[初始化查询] 未找到分片表" << table.name << "对应的数据库，跳过该表";
    if (!fileExists) {
        fail(); // it was there when the tables were listed
    }
    return false;
}

bool CurveCursor::isListedIn(const BatchTable& table)
{
    QSharedPointer<QSqlDatabase> db = m_store.openDb(table.path);
    if (!db || !db->isOpen()) {
        return true; // told when the table is opened
    }
    bool found = false;
    {
        ManagedQuery query(*db);
        const QString sql =
            QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND name=") +
            sqlLiteral(table.name);
        found = query.exec(sql) && query.next();
        if (found) {
            qDebug() << "[初始化查询] 兜底方案找到表" << table.name << "对应的数据库："
                     << table.path;
        } else if (!query.isUsable() || !query.errorText().isEmpty()) {
            qWarning() << "[初始化查询] 检查表" << table.name << "是否存在失败："
                       << query.errorText();
            fail();
        }
    }
    db.reset();
    ConnectionPool::instance().releaseConnection(table.path);
    return found;
}

bool CurveCursor::startQuery(const BatchTable& table)
{
    m_query = std::make_unique<LockedQuery>(*m_connection);
    m_query->setForwardOnly(true);
    const QString columns =
        m_columns == TimesAndValues ? QStringLiteral("timestamp, value") : QStringLiteral("value");
    const QString sql =
        QStringLiteral("SELECT %1 FROM %2 WHERE curve_id = %3 AND timestamp BETWEEN ? AND ? ORDER "
                       "BY timestamp ASC")
            .arg(columns, quotedTable(table.name), QString::number(table.fileCurveId));
    const bool prepared = m_query->prepare(sql);
    if (prepared && m_query->execWith({m_start, m_end})) {
        return true;
    }
    qWarning() << "[初始化查询] SQL执行失败：" << m_query->errorText();
    // A missing table is skipped; any other failure may hide samples.
    const bool missing = !prepared && m_query->errorText().contains(QLatin1String("no such table"));
    return missing ? false : fail();
}

bool CurveCursor::takeFirstRow(const BatchTable& table)
{
    SampleColumn first;
    if (m_query->fetchSamples(1, first) == 1) {
        m_current = first.front();
        rest();
        return true;
    }
    if (!m_query->isUsable() || !m_query->errorText().isEmpty()) {
        return failToRead(m_query->errorText());
    }
    qWarning() << "[初始化查询] 分片表" << table.name << "无匹配数据（时间范围/曲线ID过滤后为空）";
    return false;
}

void CurveCursor::rest()
{
    if (m_rests) {
        m_query->finish();
        m_isResting = true;
    }
}

bool CurveCursor::resume()
{
    m_isResting = false;
    return m_query->execWith({m_current.timestamp + 1, m_end}) || failToRead(m_query->errorText());
}

bool CurveCursor::failToRead(const QString& cause)
{
    qWarning() << "[获取数据] 曲线" << m_curveId << "读取" << m_path << "失败：" << cause;
    return fail();
}

/// Returns false, the result of the failed step.
bool CurveCursor::fail()
{
    m_failed = true;
    return false;
}

/// Releases the file it read from.
void CurveCursor::release()
{
    m_query.reset();
    m_isResting = false;
    if (!m_connection) {
        return;
    }
    m_connection.reset();
    ConnectionPool::instance().releaseConnection(m_path);
}

} // namespace scn
