#include "support/readings.h"

#include <QDateTime>
#include <QDir>
#include <QProcess>
#include <QSet>

#include <cmath>

namespace {

constexpr int kFields = 9;
/// A reply of this many bytes does not fit into the program's buffer.
constexpr int kBlownUpReply = 40960;

/// Local time of a record's fields 1 to 6.
qint64 timeOf(const QStringList& fields, int first)
{
    const QDate date(fields.at(first + 1).toInt(), fields.at(first + 2).toInt(),
                     fields.at(first + 3).toInt());
    const int seconds = static_cast<int>(std::lround(fields.at(first + 6).toDouble() * 1000));
    const QTime time =
        QTime(fields.at(first + 4).toInt(), fields.at(first + 5).toInt()).addMSecs(seconds);
    return QDateTime(date, time).toMSecsSinceEpoch();
}

} // namespace

Readings readingsInReplies(const QStringList& sentLines)
{
    Readings readings;
    for (const QString& line : sentLines) {
        // The scan list comes in a block too.
        if (!line.startsWith(QLatin1Char('#')) || line.contains(QLatin1Char('@'))) {
            continue;
        }
        const int headerLength = 2 + line.mid(1, 1).toInt();
        const QStringList fields = line.mid(headerLength).split(QLatin1Char(','));
        for (int first = 0; first + kFields <= fields.size(); first += kFields) {
            const double value = fields.at(first).section(QLatin1Char(' '), 0, 0).toDouble();
            readings[fields.at(first + 7).toInt()].append({timeOf(fields, first), value});
        }
    }
    return readings;
}

Readings storableReadings(const QStringList& sentLines)
{
    QStringList sound;
    for (const QString& line : sentLines) {
        if (!line.startsWith(QLatin1Char('#')) || line.contains(QLatin1Char('@')) ||
            line.size() >= kBlownUpReply) {
            continue;
        }
        const QStringList fields = line.mid(2 + line.mid(1, 1).toInt()).split(QLatin1Char(','));
        for (int first = 0; first + kFields <= fields.size(); first += kFields) {
            const QStringList record = fields.mid(first, kFields);
            if (record[0].contains(QLatin1Char(' ')) && record[2].toInt() <= 12) {
                sound << QStringLiteral("#0") + record.join(QLatin1Char(','));
            }
        }
    }
    return readingsInReplies(sound);
}

QString difference(const Readings& readings, const Readings& wanted)
{
    QString text;
    const QSet<int> channels = QSet<int>(readings.keyBegin(), readings.keyEnd()) +
                               QSet<int>(wanted.keyBegin(), wanted.keyEnd());
    for (const int channel : channels) {
        const auto have = readings.value(channel);
        const auto want = wanted.value(channel);
        if (have == want) {
            continue;
        }
        int first = 0;
        while (first < have.size() && first < want.size() && have[first] == want[first]) {
            ++first;
        }
        text += QStringLiteral("channel %1: %2 readings instead of %3, the first %4 are equal; ")
                    .arg(channel)
                    .arg(have.size())
                    .arg(want.size())
                    .arg(first);
    }
    return text;
}

int countOf(const Readings& readings)
{
    int count = 0;
    for (const auto& channel : readings) {
        count += channel.size();
    }
    return count;
}

int missingIn(const Readings& readings, double distanceMs)
{
    int missing = 0;
    for (const auto& channel : readings) {
        for (int i = 1; i < channel.size(); ++i) {
            const auto distance = static_cast<double>(channel[i].first - channel[i - 1].first);
            missing += static_cast<int>(std::lround(distance / distanceMs)) - 1;
        }
    }
    return missing;
}

QString gapIn(const Readings& readings, double distanceMs)
{
    for (auto channel = readings.cbegin(); channel != readings.cend(); ++channel) {
        for (int i = 1; i < channel->size(); ++i) {
            const qint64 distance = channel->at(i).first - channel->at(i - 1).first;
            if (static_cast<double>(distance) > 1.5 * distanceMs) {
                return QStringLiteral("channel %1: %2 ms behind reading %3 of %4")
                    .arg(channel.key())
                    .arg(distance)
                    .arg(i)
                    .arg(channel->size());
            }
        }
    }
    return {};
}

QStringList runSqlite(const QString& file, const QString& statement)
{
    QProcess program;
    program.start(QStringLiteral("sqlite3"), {file, statement});
    if (!program.waitForFinished() || program.exitCode() != 0) {
        return {};
    }
    return QString::fromUtf8(program.readAllStandardOutput())
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

Readings readingsInStore(const QString& directory)
{
    Readings readings;
    const QLatin1Char bar('|');
    const QStringList files = QDir(directory).entryList({QStringLiteral("*.db")});
    for (const QString& name : files) {
        const QString file = QDir(directory).filePath(name);
        const QStringList tables = runSqlite(
            file, QStringLiteral("SELECT m.table_name, i.name FROM batch_metadata m JOIN "
                                 "curve_info i ON i.curve_id = m.curve_id ORDER BY m.batch_start"));
        for (const QString& table : tables) {
            const QString curve = table.section(bar, 1);
            const int channel = curve.section(QLatin1Char('('), 0, 0).toInt();
            const QStringList rows = runSqlite(
                file, QStringLiteral("SELECT timestamp, quote(value) FROM %1 ORDER BY timestamp")
                          .arg(table.section(bar, 0, 0)));
            for (const QString& row : rows) {
                readings[channel].append(
                    {row.section(bar, 0, 0).toLongLong(), row.section(bar, 1).toDouble()});
            }
        }
    }
    return readings;
}
