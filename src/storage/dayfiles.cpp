#include "storage/dayfiles.h"

#include "storage/connectionpool.h"
#include "storage/datadirectory.h"

#include <QDebug>
#include <QDir>

#include <utility>

namespace scn {

DayFiles::DayFiles(QString directory, FileAccess access, const std::atomic<bool>& clearing,
                   const std::atomic<bool>& closedForExit)
    : m_directory(std::move(directory))
    , m_access(access)
    , m_clearing(clearing)
    , m_closedForExit(closedForExit)
{
}

DayFiles::~DayFiles() = default;

QString DayFiles::path(const QString& dateKey) const
{
    return QDir(m_directory).filePath(dateKey + QStringLiteral(".db"));
}

QSharedPointer<QSqlDatabase> DayFiles::open(const QString& path) const
{
    if (m_closedForExit) {
        return {};
    }
    if (m_clearing) {
        qWarning() << "正在清理数据库，禁止打开新连接：" << path;
        return {};
    }
    if (isLinkedDirectory(m_directory)) {
        qCritical() << "数据目录是链接，不予使用：" << m_directory;
        return {};
    }
    return ConnectionPool::instance().acquireConnection(path, m_access);
}

} // namespace scn
