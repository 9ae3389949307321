#include "launcher/place/keptrun.h"

#include "launcher/place/resourceidentity.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>

namespace scnlauncher {
namespace {

const QString kDataSuffix = QStringLiteral("_Data");
const QString kStartFormat = QStringLiteral("yyyy-MM-dd_HH-mm-ss");

// The members of run.json.
const QString kInstrument = QStringLiteral("instrument");
const QString kSerial = QStringLiteral("serial");
const QString kStart = QStringLiteral("start");
const QString kSource = QStringLiteral("source");
const QString kFiles = QStringLiteral("files");

constexpr auto kFolders = QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks;

} // namespace

QString keptRunFacts(const QString& folder)
{
    return folder + QStringLiteral("/run.json");
}

std::optional<KeptRun> KeptRun::in(const QString& folder)
{
    QFile file(keptRunFacts(folder));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject()) {
        return std::nullopt;
    }
    const QJsonObject object = document.object();
    KeptRun run;
    run.folder = folder;
    run.instrument = object.value(kInstrument).toString();
    run.serial = object.value(kSerial).toString(serialOfKeptRun(folder));
    run.start = QDateTime::fromString(object.value(kStart).toString(), Qt::ISODateWithMs);
    run.source = object.value(kSource).toString();
    const QJsonObject files = object.value(kFiles).toObject();
    for (auto entry = files.begin(); entry != files.end(); ++entry) {
        run.files.insert(entry.key(), entry.value().toString());
    }
    return run;
}

bool KeptRun::write() const
{
    QJsonObject names;
    for (auto entry = files.begin(); entry != files.end(); ++entry) {
        names.insert(entry.key(), entry.value());
    }
    const QJsonObject object{
        {kInstrument, instrument},
        {kSerial, serial},
        {kStart, start.toOffsetFromUtc(start.offsetFromUtc()).toString(Qt::ISODate)},
        {kSource, source},
        {kFiles, names}};
    QSaveFile file(keptRunFacts(folder));
    // commit() alone would put an empty file in place on a full disk.
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(object).toJson()) > 0 &&
           file.flush() && file.commit();
}

QString keptRunsFolder(const QString& folder)
{
    return folder + QStringLiteral("/runs");
}

bool isDataDirectory(const QString& directory)
{
    return directory.endsWith(kDataSuffix);
}

QString serialOfDataDirectory(const QString& directory)
{
    QString serial = QFileInfo(directory).fileName();
    if (serial.endsWith(kDataSuffix)) {
        serial.chop(kDataSuffix.size());
    }
    return serial;
}

QString serialOfKeptRun(const QString& folder)
{
    return QFileInfo(QFileInfo(folder).path()).fileName();
}

QString newKeptRunFolder(const QString& runsFolder, const QString& serial, const QDateTime& start)
{
    const QString first = runsFolder + QLatin1Char('/') + readableName(serial) + QLatin1Char('/') +
                          start.toString(kStartFormat);
    QString folder = first;
    for (int number = 2; QFileInfo::exists(folder); ++number) {
        folder = first + QLatin1Char('-') + QString::number(number);
    }
    return folder;
}

QVector<KeptRun> keptRunsIn(const QString& runsFolder)
{
    QVector<KeptRun> runs;
    const QDir all(runsFolder);
    for (const QString& serial : all.entryList(kFolders, QDir::Name)) {
        const QDir ofSerial(all.filePath(serial));
        for (const QString& start : ofSerial.entryList(kFolders, QDir::Name)) {
            if (const std::optional<KeptRun> run = KeptRun::in(ofSerial.filePath(start))) {
                runs.append(*run);
            }
        }
    }
    return runs;
}

QStringList dayFileNames(const QString& directory)
{
    static const QRegularExpression dayFile(QStringLiteral("^[0-9]{8}\\.db$"));
    return QDir(directory).entryList(QDir::Files | QDir::NoSymLinks, QDir::Name).filter(dayFile);
}

} // namespace scnlauncher
