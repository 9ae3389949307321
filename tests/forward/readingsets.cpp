#include "readingsets.h"

#include "support/postgresserver.h"

#include <QProcess>
#include <QSet>
#include <QUrl>

#include <algorithm>
#include <limits>

namespace {

constexpr int kPatienceMs = 120000;

QStringList sqliteRows(const QString& path, const QString& sql)
{
    QProcess process;
    process.start(QStringLiteral("sqlite3"),
                  {QStringLiteral("-readonly"), QStringLiteral("-list"), path, sql},
                  QIODevice::ReadOnly);
    process.waitForFinished(kPatienceMs);
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    return errors.isEmpty() ? QString::fromUtf8(process.readAllStandardOutput())
                                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts)
                            : QStringList{QStringLiteral("error: ") + errors};
}

/// The programs write numbers in their own ways.
QString oneSpelling(const QString& number)
{
    const double endless = std::numeric_limits<double>::infinity();
    double value = number.toDouble();
    if (number.contains(QLatin1String("Inf"))) {
        value = number.startsWith(QLatin1Char('-')) ? -endless : endless;
    } else if (number.isEmpty() || number == QLatin1String("NaN")) {
        value = std::numeric_limits<double>::quiet_NaN();
    }
    return QString::number(value, 'g', 17);
}

QString reading(const QString& instrument, const QStringList& columns)
{
    return QStringList{instrument, columns.value(0), columns.value(1),
                       oneSpelling(columns.value(2))}
        .join(QLatin1Char(' '));
}

} // namespace

QStringList readingsets::inFile(const QString& path, const QString& instrument)
{
    QStringList readings;
    const QStringList tables = sqliteRows(
        path, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND name GLOB "
                             "'curve_[0-9]*_batch_*'"));
    for (const QString& table : tables) {
        const QStringList rows = sqliteRows(
            path, QStringLiteral("SELECT name, timestamp, printf('%!.17g', value) FROM \"%1\" JOIN "
                                 "curve_info USING (curve_id)")
                      .arg(table));
        for (const QString& row : rows) {
            readings.append(reading(instrument, row.split(QLatin1Char('|'))));
        }
    }
    readings.sort();
    return readings;
}

QStringList readingsets::inDatabase(const PostgresServer& server)
{
    QStringList readings;
    const QStringList rows = server.rows(
        QStringLiteral("SELECT instrument, curve, round(extract(epoch FROM time) * 1000), value "
                       "FROM reading"));
    for (const QString& row : rows) {
        const QStringList columns = row.split(QLatin1Char('|'));
        readings.append(reading(columns.first(), columns.mid(1)));
    }
    readings.sort();
    return readings;
}

QString readingsets::difference(const QStringList& expected, const QStringList& found)
{
    QStringList missing;
    QStringList surplus;
    std::set_difference(expected.cbegin(), expected.cend(), found.cbegin(), found.cend(),
                        std::back_inserter(missing));
    std::set_difference(found.cbegin(), found.cend(), expected.cbegin(), expected.cend(),
                        std::back_inserter(surplus));
    if (missing.isEmpty() && surplus.isEmpty()) {
        return {};
    }
    return QStringLiteral("%1 of %2 missing (%3), %4 too many (%5)")
        .arg(missing.size())
        .arg(expected.size())
        .arg(missing.value(0))
        .arg(surplus.size())
        .arg(surplus.value(0));
}
