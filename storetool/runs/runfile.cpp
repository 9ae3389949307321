#include "storetool/runs/runfile.h"

#include "storage/connectionsetup.h"
#include "storage/managedquery.h"
#include "storage/statements.h"

#include <QFileInfo>
#include <QSqlRecord>

#include <limits>

namespace scnstore {
namespace {

/// A file keeps whatever type was written to it.
bool holdsNumbers(const QSqlQuery& row)
{
    for (int column = 0; column < row.record().count(); ++column) {
        const QVariant value = row.value(column);
        const bool isNumber =
            value.type() == QVariant::LongLong || value.type() == QVariant::Double;
        if (!isNumber && !value.isNull()) {
            return false;
        }
    }
    return true;
}

} // namespace

RunFile::RunFile(const QString& path)
    : m_path(path)
    , m_database(scn::createReadOnlyConnection(path))
{
    if (!m_database.isOpen()) {
        m_failure = QStringLiteral("it cannot be opened");
    }
}

RunFile::~RunFile()
{
    const QString connection = m_database.connectionName();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(connection);
}

QString RunFile::name() const
{
    return QFileInfo(m_path).fileName();
}

bool RunFile::query(const QString& sql, std::initializer_list<QVariant> values, const Row& row)
{
    if (!m_database.isOpen()) {
        return false;
    }
    ManagedQuery statement(m_database);
    statement.setForwardOnly(true);
    const bool succeeded = statement.run(sql, values);
    if (succeeded) {
        statement.fetchRows(std::numeric_limits<int>::max(), row);
    }
    m_failure = statement.errorText();
    m_metLock = m_metLock || statement.metLock();
    // Qt adds words of its own.
    m_failure.remove(QStringLiteral(" Unable to execute statement"));
    m_failure.remove(QStringLiteral(" Unable to fetch row"));
    return succeeded && m_failure.isEmpty();
}

bool RunFile::queryNumbers(const QString& sql, std::initializer_list<QVariant> values,
                           const Row& row)
{
    bool areNumbers = true;
    const bool succeeded = query(sql, values, [&areNumbers, &row](const QSqlQuery& record) {
        areNumbers = areNumbers && holdsNumbers(record);
        if (areNumbers) {
            row(record);
        }
    });
    if (succeeded && !areNumbers) {
        m_failure = QStringLiteral("the time or value of a reading is no number");
    }
    return succeeded && areNumbers;
}

bool RunFile::readCatalogue(Catalogue& catalogue)
{
    const bool hasBegun = query(scn::kBegin, {}, {});
    bool succeeded =
        hasBegun &&
        query(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"), {},
              [&catalogue](const QSqlQuery& row) {
                  catalogue.existing.append(row.value(0).toString());
              }) &&
        query(QStringLiteral("SELECT curve_id, name FROM curve_info"), {},
              [&catalogue](const QSqlQuery& row) {
                  catalogue.curves.insert(row.value(0).toInt(), row.value(1).toString());
              }) &&
        query(QStringLiteral("SELECT curve_id, table_name, batch_start, batch_end FROM "
                             "batch_metadata ORDER BY batch_start, curve_id"),
              {}, [&catalogue](const QSqlQuery& row) {
                  catalogue.tables.append({row.value(0).toInt(), row.value(1).toString(),
                                           row.value(2).toLongLong(), row.value(3).toLongLong()});
              });
    const QString failure = m_failure;
    if (hasBegun) {
        query(scn::kRollback, {}, {});
    }
    m_failure = failure;
    return succeeded;
}

} // namespace scnstore
