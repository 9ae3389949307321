#include "support/exportedfile.h"

#include <QDateTime>
#include <QFile>

QStringList exportedLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray bytes = file.readAll();
    if (!bytes.startsWith("\xEF\xBB\xBF") || !bytes.endsWith('\n')) {
        return {};
    }
    return QString::fromUtf8(bytes.mid(3).chopped(1)).split(QLatin1Char('\n'));
}

QStringList exportedRows(const Readings& readings, qint64 start, qint64 end)
{
    QVector<QVector<QPair<qint64, double>>> columns;
    int count = 0;
    for (const auto& channel : readings) {
        QVector<QPair<qint64, double>> column;
        for (const auto& reading : channel) {
            if (reading.first >= start && reading.first <= end) {
                column.append(reading);
            }
        }
        count = qMax(count, column.size());
        columns.append(column);
    }
    QStringList rows;
    for (int row = 0; row < count; ++row) {
        QStringList cells{QString::number(row + 1), QString()};
        if (row < columns.constFirst().size()) {
            cells[1] = QDateTime::fromMSecsSinceEpoch(columns.constFirst().at(row).first)
                           .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        }
        for (const auto& column : columns) {
            cells.append(row < column.size() ? QString::asprintf("%.15E", column.at(row).second)
                                             : QString());
        }
        rows.append(cells.join(QLatin1Char(',')));
    }
    return rows;
}
