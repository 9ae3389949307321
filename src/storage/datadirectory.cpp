#include "storage/datadirectory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

QString dataDirectoryName(const QString& identity)
{
    QString serial = identity.section(QLatin1Char(' '), 2, 2);
    serial.replace(QLatin1Char('/'), QLatin1Char('_'));
    serial.replace(QLatin1Char('\\'), QLatin1Char('_'));
    return QStringLiteral("%1_Data").arg(serial);
}

bool removeDataDirectory(const QString& directoryName)
{
    if (directoryName.isEmpty() || directoryName == QLatin1String(".") ||
        directoryName == QLatin1String("..") || directoryName.contains(QLatin1Char('/')) ||
        directoryName.contains(QLatin1Char('\\')))
        return false;

    const QDir applicationDir(QCoreApplication::applicationDirPath());
    const QFileInfo info(applicationDir.filePath(directoryName));
    if (info.isSymLink())
        return false;
    if (!info.exists())
        return true;
    if (!info.isDir() ||
        QFileInfo(info.canonicalPath()) != QFileInfo(applicationDir.canonicalPath()))
        return false;
    return QDir(info.absoluteFilePath()).removeRecursively();
}
