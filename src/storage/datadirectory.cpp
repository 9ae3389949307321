#include "storage/datadirectory.h"

#include "storage/shardnaming.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace {

/// The file systems' limit for a name, less our suffix.
constexpr int kLongestNameBytes = 255;
constexpr int kEndBytes = 5;
constexpr int kHashDigits = 8;
constexpr int kDateKeyLength = 8;
/// How far the dates of two zones are apart at most: their clocks differ by up to 26 hours.
constexpr int kDaysBetweenZones = 2;

/// The serial number, short enough to leave room for the suffix.
QString fittingSerial(const QString& serial)
{
    if (serial.toUtf8().size() + kEndBytes <= kLongestNameBytes) {
        return serial;
    }
    const QByteArray hash =
        QCryptographicHash::hash(serial.toUtf8(), QCryptographicHash::Sha1).toHex();
    const QString end = QLatin1Char('-') + QString::fromLatin1(hash.constData(), kHashDigits);
    QString begin = serial;
    while (begin.toUtf8().size() + end.size() + kEndBytes > kLongestNameBytes) {
        begin.chop(1);
    }
    if (begin.at(begin.size() - 1).isHighSurrogate()) {
        begin.chop(1);
    }
    return begin + end;
}

} // namespace

QString dataDirectoryName(const QString& identity)
{
    QString serial = identity.section(QLatin1Char(' '), 2, 2);
    serial.replace(QLatin1Char('/'), QLatin1Char('_'));
    serial.replace(QLatin1Char('\\'), QLatin1Char('_'));
    return QStringLiteral("%1_Data").arg(fittingSerial(serial));
}

bool isLinkedDirectory(const QString& path)
{
    return QFileInfo(path).isSymLink();
}

bool removeDataDirectory(const QString& directoryName)
{
    if (directoryName.isEmpty() || directoryName == QLatin1String(".") ||
        directoryName == QLatin1String("..") || directoryName.contains(QLatin1Char('/')) ||
        directoryName.contains(QLatin1Char('\\'))) {
        return false;
    }

    const QDir applicationDir(QCoreApplication::applicationDirPath());
    const QFileInfo info(applicationDir.filePath(directoryName));
    if (isLinkedDirectory(info.filePath())) {
        return false;
    }
    if (!info.exists()) {
        return true;
    }
    if (!info.isDir() ||
        QFileInfo(info.canonicalPath()) != QFileInfo(applicationDir.canonicalPath())) {
        return false;
    }
    return QDir(info.absoluteFilePath()).removeRecursively();
}

QStringList dayFilesIn(const QString& directory)
{
    const QDir folder(directory);
    QStringList paths;
    for (const QString& name :
         folder.entryList({QStringLiteral("????????.db")}, QDir::Files, QDir::Name)) {
        if (!digitsOfBaseName(name, kDateKeyLength).isEmpty()) {
            paths.append(folder.filePath(name));
        }
    }
    return paths;
}

QStringList dayFilesBetween(const QString& directory, qint64 start, qint64 end)
{
    const auto keyOf = [](qint64 time, int days) {
        return QDateTime::fromMSecsSinceEpoch(time).addDays(days).toString(
            QStringLiteral("yyyyMMdd"));
    };
    const QString first = keyOf(start, -kDaysBetweenZones);
    const QString last = keyOf(end, kDaysBetweenZones);
    QStringList paths;
    for (const QString& path : dayFilesIn(directory)) {
        const QString key = digitsOfBaseName(path, kDateKeyLength);
        if (key >= first && key <= last) {
            paths.append(path);
        }
    }
    return paths;
}
