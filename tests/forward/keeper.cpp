#include "keeper.h"

#include "storage/fileidentity.h"

#include <QFile>

#include <unistd.h>

Keeper::Keeper(const QString& dataDirectory, const QString& runs)
    : m_data(dataDirectory)
    , m_runs(runs)
{
}

void Keeper::keep()
{
    const QStringList names = m_data.entryList({QStringLiteral("*.db")}, QDir::Files);
    for (const QString& name : names) {
        const QString path = m_data.filePath(name);
        QString& folder = m_folders[scn::fileIdentity(path).number];
        if (folder.isEmpty()) {
            folder = m_runs.filePath(QStringLiteral("run%1").arg(m_folders.size()));
            m_runs.mkpath(folder);
            QFile note(folder + QStringLiteral("/run.json"));
            note.open(QIODevice::WriteOnly);
            note.write("{\"serial\": \"MY1\"}");
        }
        for (const char* suffix : {"", "-wal"}) {
            const QString source = path + QString::fromLatin1(suffix);
            const QString link = folder + QLatin1Char('/') + name + QString::fromLatin1(suffix);
            if (QFile::exists(source) && scn::fileIdentity(source) != scn::fileIdentity(link)) {
                QFile::remove(link);
                const int code = ::link(qPrintable(source), qPrintable(link));
                Q_ASSERT(code == 0);
                Q_UNUSED(code);
            }
        }
    }
}

QStringList Keeper::files() const
{
    QStringList paths;
    for (const QString& folder : m_folders) {
        const QDir directory(folder);
        for (const QString& name : directory.entryList({QStringLiteral("*.db")}, QDir::Files)) {
            paths.append(directory.filePath(name));
        }
    }
    return paths;
}
