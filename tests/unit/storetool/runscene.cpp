#include "runscene.h"

#include "dayfilewriter.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <filesystem>

namespace {

const QString kFormat = QStringLiteral("yyyyMMddhh:mm");

qint64 momentOf(const char* key, const char* time)
{
    return QDateTime::fromString(QString::fromLatin1(key) + QString::fromLatin1(time), kFormat)
        .toMSecsSinceEpoch();
}

} // namespace

RunScene::RunScene()
{
    QDir().mkpath(dataDirectory());
}

QString RunScene::dayFile(const char* key) const
{
    return QDir(dataDirectory()).filePath(QString::fromLatin1(key) + QStringLiteral(".db"));
}

void RunScene::addDay(const char* key, int stepMs, const char* end) const
{
    DayFileWriter file(dayFile(key));
    const qint64 stop = momentOf(key, end);
    for (const int id : {1, 2}) {
        file.addCurve(id, QStringLiteral("10%1(Vdc)").arg(id));
        for (qint64 batch = momentOf(key, "06:00"); batch < stop; batch += kBatchMs) {
            QVector<QPointF> points;
            for (qint64 time = batch; time < qMin(stop, batch + kBatchMs); time += stepMs) {
                points.append({static_cast<double>(time + id),
                               static_cast<double>(id) / 3 + static_cast<double>(points.size())});
            }
            file.addBatch(id, batch, DayFileWriter::tableName(id, batch), points);
        }
    }
}

void RunScene::change(const char* key, const QString& sql) const
{
    DayFileWriter(dayFile(key)).execute(sql);
}

QString RunScene::keep() const
{
    const QString kept = path(QStringLiteral("runs/SN1/2026-01-12_06-00-00"));
    QDir().mkpath(kept);
    for (const QString& name : QDir(dataDirectory()).entryList(QDir::Files)) {
        if (!name.endsWith(QLatin1String("-shm"))) {
            std::filesystem::create_hard_link(QDir(dataDirectory()).filePath(name).toStdString(),
                                              QDir(kept).filePath(name).toStdString());
        }
    }
    QFile facts(QDir(kept).filePath(QStringLiteral("run.json")));
    if (!facts.open(QIODevice::WriteOnly)) {
        qFatal("%s", qPrintable(facts.errorString()));
    }
    const QDateTime start = QDateTime::fromMSecsSinceEpoch(momentOf("20260112", "06:00"));
    facts.write(
        QJsonDocument(
            QJsonObject{{QStringLiteral("instrument"), QStringLiteral("TCPIP0::h")},
                        {QStringLiteral("serial"), QStringLiteral("SN1")},
                        {QStringLiteral("start"),
                         start.toOffsetFromUtc(start.offsetFromUtc()).toString(Qt::ISODate)},
                        {QStringLiteral("source"), dataDirectory()}})
            .toJson());
    return kept;
}

void RunScene::clear() const
{
    QDir(dataDirectory()).removeRecursively();
}

QStringList RunScene::listing(const QString& directory)
{
    QStringList listing;
    for (const QFileInfo& file : QDir(directory).entryInfoList(QDir::Files, QDir::Name)) {
        listing.append(QStringLiteral("%1 %2 %3")
                           .arg(file.fileName(), QString::number(file.size()),
                                QString::number(file.lastModified().toMSecsSinceEpoch())));
    }
    return listing;
}

void spoil(const QString& path, qint64 place, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || (bytes.isEmpty() && !file.resize(place)) ||
        !file.seek(place) || file.write(bytes) != bytes.size()) {
        qFatal("%s", qPrintable(file.errorString()));
    }
}
