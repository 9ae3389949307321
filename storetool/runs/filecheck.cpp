#include "storetool/runs/filecheck.h"

#include "storage/shardnaming.h"
#include "storetool/console/interrupt.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace scnstore {
namespace {

/// The times that are read under one lock of the file.
constexpr int kTimesPerRead = 20000;

/// Where the header of a database says how it is read, and what it says for a WAL.
constexpr int kReadVersionPlace = 19;
constexpr char kWalVersion = 2;

QString count(qint64 number, const QString& one)
{
    return QStringLiteral("%1 %2%3").arg(QString::number(number), one,
                                         number == 1 ? QString() : QStringLiteral("s"));
}

} // namespace

FileCheck::FileCheck(const QString& path, bool isKnownToBeWhole, CheckedRun& result)
    : m_path(path)
    , m_isKnownToBeWhole(isKnownToBeWhole)
    , m_hasWal(QFile::exists(path + QStringLiteral("-wal")))
    , m_file(path)
    , m_result(result)
{
    const QString wal = path + QStringLiteral("-wal");
    m_checked.name = m_file.name();
    m_checked.bytes = QFileInfo(path).size() + QFileInfo(wal).size();
}

void FileCheck::run()
{
    RunFile::Catalogue catalogue;
    if (!hasContent()) {
        tellDamage(QStringLiteral("is empty"));
    } else if (!m_file.readCatalogue(catalogue)) {
        tellDamage(QStringLiteral("cannot be read: ") + m_file.failure());
    } else {
        noteMissingWal();
        checkStructure(QStringLiteral("sqlite_schema"));
        for (const QString& table : qAsConst(catalogue.existing)) {
            if (!isInterrupted()) {
                checkStructure(table);
            }
        }
        checkNames();
        compareCatalogue(catalogue);
        checkNumbers(catalogue);
        for (const ListedTable& table : qAsConst(catalogue.tables)) {
            checkTable(catalogue, table);
        }
    }
    m_result.metLock = m_result.metLock || m_file.metLock();
    m_result.files.append(m_checked);
}

bool FileCheck::hasContent()
{
    return m_checked.bytes > 0;
}

/// A WAL that was checkpointed is gone, and the file's header may still say that there is one.
void FileCheck::noteMissingWal()
{
    QFile file(m_path);
    if (!m_hasWal && !m_isKnownToBeWhole && file.open(QIODevice::ReadOnly) &&
        file.read(kReadVersionPlace + 1).endsWith(kWalVersion)) {
        m_result.notes.append(
            QStringLiteral(
                "%1 was used with a WAL, %1-wal, which is not there: it was checkpointed, or "
                "the file was copied without it and lacks the last readings")
                .arg(m_checked.name));
    }
}

void FileCheck::checkStructure(const QString& table)
{
    QStringList complaints;
    const bool succeeded = m_file.query(
        QStringLiteral("PRAGMA integrity_check(%1)").arg(sqlLiteral(table)), {},
        [&complaints](const QSqlQuery& row) { complaints.append(row.value(0).toString()); });
    if (!succeeded) {
        tellDamage(QStringLiteral("table %1 cannot be checked: %2").arg(table, m_file.failure()));
    } else if (complaints != QStringList{QStringLiteral("ok")}) {
        tellDamage(
            QStringLiteral("table %1 is damaged: %2").arg(table, complaints.value(0).simplified()));
    }
}

/// A name that is not UTF-8, or has zeros in it, reads differently from one program to the next.
void FileCheck::checkNames()
{
    m_file.query(QStringLiteral("SELECT curve_id, CAST(name AS BLOB) FROM curve_info"), {},
                 [this](const QSqlQuery& row) {
                     const QByteArray name = row.value(1).toByteArray();
                     if (name.contains('\0') || QString::fromUtf8(name).toUtf8() != name) {
                         tellDamage(QStringLiteral("has a name for curve %1 that is no text")
                                        .arg(row.value(0).toString()));
                     }
                 });
}

void FileCheck::compareCatalogue(const RunFile::Catalogue& catalogue)
{
    QStringList listed;
    for (const ListedTable& table : catalogue.tables) {
        listed.append(table.name);
        if (!catalogue.existing.contains(table.name)) {
            tellDamage(QStringLiteral("table %1 is listed but not there").arg(table.name));
        }
        if (!catalogue.curves.contains(table.curveId)) {
            tellDamage(QStringLiteral("table %1 is listed for curve %2, which has no name")
                           .arg(table.name, QString::number(table.curveId)));
        }
    }
    for (const QString& name : catalogue.existing) {
        if (name.startsWith(QLatin1String("curve_")) && name.contains(QLatin1String("_batch_")) &&
            !listed.contains(name)) {
            tellDamage(
                QStringLiteral("table %1 is there but not listed, so that no export finds it")
                    .arg(name));
        }
    }
}

/// SQLite keeps the last number of each table that ever had a row. Whoever follows the file relies on it.
void FileCheck::checkNumbers(const RunFile::Catalogue& catalogue)
{
    const QString numbers = QStringLiteral("sqlite_sequence");
    QStringList numbered;
    if (!catalogue.existing.contains(numbers)) {
        return; // no table had a row
    }
    m_file.query(QStringLiteral("SELECT name FROM sqlite_sequence"), {},
                 [&numbered](const QSqlQuery& row) { numbered.append(row.value(0).toString()); });
    for (const QString& name : qAsConst(numbered)) {
        if (!catalogue.existing.contains(name)) {
            tellDamage(QStringLiteral("has a last number for table %1, which is not there")
                           .arg(name.simplified()));
        }
    }
    for (const ListedTable& table : catalogue.tables) {
        if (catalogue.existing.contains(table.name) && !numbered.contains(table.name)) {
            m_file.query(QStringLiteral("SELECT 1 FROM %1 LIMIT 1").arg(quotedName(table.name)), {},
                         [this, &table](const QSqlQuery&) {
                             tellDamage(QStringLiteral("table %1 has readings, but no last number")
                                            .arg(table.name));
                         });
        }
    }
}

void FileCheck::checkTable(const RunFile::Catalogue& catalogue, const ListedTable& table)
{
    if (!catalogue.existing.contains(table.name) || isInterrupted()) {
        return;
    }
    const QString curve = catalogue.curves.value(table.curveId);
    CheckedTable checked{table.name, curve, 0, 0};
    RowCounts rows;
    const bool succeeded = countRows(table, rows) && readTimes(table, curve, checked);
    m_checked.tables.append(checked);
    if (!succeeded) {
        tellDamage(QStringLiteral("table %1 cannot be read: %2").arg(table.name, m_file.failure()));
        return;
    }
    const auto tell = [this, &table](qint64 readings, const char* what) {
        if (readings > 0) {
            tellDamage(QStringLiteral("table %1 has %2 %3")
                           .arg(table.name, count(readings, QStringLiteral("reading")),
                                QString::fromLatin1(what)));
        }
    };
    tell(rows.foreign, "of another curve");
    tell(rows.senseless, "whose time or value is no number");
    tell(checked.doubles, "of the same millisecond as another");
    tell(rows.timed - checked.readings, "that its index does not find");
}

/// Counts without the index, which may be what is damaged. A file holds whatever type was written to it.
bool FileCheck::countRows(const ListedTable& table, RowCounts& rows)
{
    const QString sql =
        QStringLiteral("SELECT total(curve_id IS NOT ?), "
                       "total(typeof(timestamp) <> 'integer' OR typeof(value) <> 'real'), "
                       "total(curve_id IS ? AND typeof(timestamp) = 'integer') "
                       "FROM %1 NOT INDEXED")
            .arg(quotedName(table.name));
    return m_file.query(sql, {table.curveId, table.curveId}, [&rows](const QSqlQuery& row) {
        rows = {row.value(0).toLongLong(), row.value(1).toLongLong(), row.value(2).toLongLong()};
    });
}

/// Reads the times by the table's index, as an export does. Each read begins after the latest time so far,
/// so that it ends on an index in disorder, too.
bool FileCheck::readTimes(const ListedTable& table, const QString& curve, CheckedTable& checked)
{
    const QString sql =
        QStringLiteral("SELECT timestamp FROM %1 WHERE curve_id = ? AND timestamp > "
                       "? AND typeof(timestamp) = 'integer' ORDER BY timestamp LIMIT ?")
            .arg(quotedName(table.name));
    CheckedCurve& all = m_result.curves[curve];
    qint64 before = 0;
    qint64 last = std::numeric_limits<qint64>::min();
    do {
        before = last;
        const bool succeeded =
            m_file.query(sql, {table.curveId, before, kTimesPerRead}, [&](const QSqlQuery& row) {
                const qint64 time = row.value(0).toLongLong();
                last = std::max(last, time);
                takeTime(time, all, checked);
            });
        if (!succeeded) {
            return false;
        }
    } while (last > before && !isInterrupted());
    return true;
}

void FileCheck::takeTime(qint64 time, CheckedCurve& curve, CheckedTable& checked) const
{
    const bool isFirst = curve.readings == 0;
    if (!isFirst && time == curve.lastTime) {
        ++checked.doubles;
    } else if (!isFirst && time > curve.lastTime) {
        curve.intervals.add({curve.lastTime, time});
    }
    curve.lastTime = isFirst ? time : std::max(curve.lastTime, time);
    ++curve.readings;
    ++checked.readings;
}

void FileCheck::tellDamage(const QString& what)
{
    m_result.damage.append(m_checked.name + QLatin1Char(' ') + what);
}

} // namespace scnstore
