#include "timescene.h"

#include "dayfilereader.h"
#include "dayfilewriter.h"

#include <QDateTime>
#include <QDir>

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

qint64 instant(const char* time)
{
    const QDateTime moment = QDateTime::fromString(text(time), Qt::ISODateWithMs);
    if (!moment.isValid() || moment.timeSpec() == Qt::LocalTime) {
        qFatal("not a time with its distance from UTC: %s", time);
    }
    return moment.toMSecsSinceEpoch();
}

int enlist(TestStore& store, const char* name, std::initializer_list<const char*> dateKeys)
{
    const QString insert =
        QStringLiteral("INSERT INTO curve_info (name) VALUES ('%1')").arg(text(name));
    const QString error = dayfile::execute(store->todayDbPath(), insert);
    if (!error.isEmpty()) {
        qFatal("%s", qPrintable(error));
    }
    for (const char* key : dateKeys) {
        DayFileWriter(store.path(key)).execute(insert);
    }
    return store->registerCurve(text(name));
}

void play(TestStore& store, std::initializer_list<Reading> readings)
{
    for (const Reading& reading : readings) {
        setPresent(instant(reading.present));
        store->appendPoint(reading.curveId, instant(reading.time), reading.value);
    }
}

QStringList allRows(const QString& directory)
{
    QStringList all;
    const QStringList files =
        QDir(directory).entryList({QStringLiteral("*.db")}, QDir::Files, QDir::Name);
    for (const QString& file : files) {
        all.append(file);
        const QString path = directory + QLatin1Char('/') + file;
        const QStringList tables = dayfile::rows(
            path, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' "
                                 "AND name NOT LIKE 'sqlite_%' ORDER BY name"));
        for (const QString& table : tables) {
            all.append(table);
            all +=
                dayfile::rows(path, QStringLiteral("SELECT * FROM \"%1\" ORDER BY 1").arg(table));
        }
    }
    return all;
}

QStringList lines(const char* utf8)
{
    QStringList trimmed;
    const QStringList raw = text(utf8).split(QLatin1Char('\n'));
    for (const QString& line : raw) {
        if (!line.trimmed().isEmpty()) {
            trimmed.append(line.trimmed());
        }
    }
    return trimmed;
}
