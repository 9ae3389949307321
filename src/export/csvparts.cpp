#include "export/csvparts.h"

#include "storage/curvedatadb.h"

#include <QByteArray>
#include <QDebug>

namespace scn {

CsvParts::CsvParts(CurveDataDB& store, const QString& path, const QString& separator,
                   const QMap<QString, QString>& header, const QMap<int, QString>& curves)
    : m_store(store)
    , m_device(&m_file)
    , m_path(path)
    , m_separator(separator)
    , m_header(header)
    , m_curves(curves)
{
}

CsvParts::CsvParts(CurveDataDB& store, QFileDevice& device, const QString& separator,
                   const QMap<QString, QString>& header, const QMap<int, QString>& curves)
    : m_store(store)
    , m_device(&device)
    , m_separator(separator)
    , m_header(header)
    , m_curves(curves)
{
}

CsvParts::~CsvParts()
{
    close();
    if (!m_kept) {
        removeFiles();
    }
}

bool CsvParts::openNext()
{
    close();
    ++m_index;
    if (m_device != &m_file) {
        CurveDataDB::writeCsvHead(m_separator, m_header, m_curves, *m_device, m_stream);
        noteError();
        return true;
    }
    const bool created =
        m_store.openCsvPart(m_path, m_index, m_separator, m_header, m_curves, m_file, m_stream);
    if (!created) {
        return false;
    }
    m_createdFiles.append(m_file.fileName());
    m_listedFiles.append(CurveDataDB::partFilePath(m_path, m_index));
    noteError();
    return true;
}

void CsvParts::write(const QByteArray& text)
{
    if (m_device->write(text) != text.size()) {
        m_whole = false;
    }
}

void CsvParts::flush()
{
    if (!m_device->flush()) {
        m_whole = false;
    }
}

void CsvParts::close()
{
    if (m_device != &m_file) {
        flush();
        return;
    }
    if (!m_file.isOpen()) {
        return;
    }
    m_file.close();
    noteError(); // a disk may tell only now that it is full
}

void CsvParts::noteError()
{
    if (m_device->error() != QFileDevice::NoError) {
        m_whole = false;
    }
}

void CsvParts::removeFiles()
{
    for (const QString& name : qAsConst(m_createdFiles)) {
        if (QFile::exists(name) && !QFile::remove(name)) {
            qWarning() << "[导出线程] 删除临时文件失败：" << name;
        }
    }
}

} // namespace scn
