#include "storetool/runs/storedrun.h"

#include "storage/datadirectory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace scnstore {
namespace {

const QString kDataSuffix = QStringLiteral("_Data");

} // namespace

QStringList StoredRun::dayFiles() const
{
    return dayFilesIn(directory);
}

StoredRun StoredRun::in(const QString& directory)
{
    StoredRun run;
    run.directory = QFileInfo(directory).canonicalFilePath();
    const QDir folder(run.directory);
    run.serial = folder.dirName();
    if (run.serial.endsWith(kDataSuffix)) {
        run.serial.chop(kDataSuffix.size());
    }
    QFile facts(folder.filePath(QStringLiteral("run.json")));
    run.isKept = facts.exists();
    if (run.isKept && facts.open(QIODevice::ReadOnly)) {
        const QJsonObject object = QJsonDocument::fromJson(facts.readAll()).object();
        run.instrument = object.value(QLatin1String("instrument")).toString();
        run.serial = object.value(QLatin1String("serial"))
                         .toString(QFileInfo(run.directory).dir().dirName());
        run.start = QDateTime::fromString(object.value(QLatin1String("start")).toString(),
                                          Qt::ISODateWithMs);
        run.source = object.value(QLatin1String("source")).toString();
    }
    return run;
}

} // namespace scnstore
