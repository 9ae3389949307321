#include "storetool/console/outputfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace scnstore {

OutputFile::OutputFile(const QString& path)
    : m_path(path)
{
    const QFileInfo place(path);
    if (isStandardOutput() || (place.exists() && !place.isFile())) {
        m_device = std::make_unique<QFile>(path);
        return;
    }
    auto file = std::make_unique<QSaveFile>(path);
    m_whole = file.get();
    m_device = std::move(file);
}

OutputFile::~OutputFile() = default;

bool OutputFile::isStandardOutput() const
{
    return m_path == QLatin1String("-");
}

bool OutputFile::open()
{
    if (isStandardOutput()) {
        return static_cast<QFile&>(*m_device).open(stdout, QIODevice::WriteOnly);
    }
    return m_device->open(QIODevice::WriteOnly);
}

bool OutputFile::finish()
{
    if (!m_device->flush() || m_device->error() != QFileDevice::NoError) {
        return false;
    }
    return !m_whole || m_whole->commit();
}

QString OutputFile::failure() const
{
    return m_device->errorString();
}

} // namespace scnstore
