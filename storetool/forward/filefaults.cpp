#include "storetool/forward/filefaults.h"

#include <QFileInfo>

#include <utility>

namespace scnstore {

namespace {

using namespace std::chrono_literals;

/// A file can be locked, or still be open in another program, for a moment.
constexpr auto kPatience = 10s;

} // namespace

void FileFaults::beginLook()
{
    for (Fault& fault : m_faults) {
        fault.isSeen = false;
    }
}

void FileFaults::note(const QString& path, const QString& reason)
{
    const Clock::time_point now = Clock::now();
    const auto fault = m_faults.find(path);
    if (fault == m_faults.end() || fault->reason != reason) {
        m_faults.insert(path, {reason, now});
        return;
    }
    fault->isSeen = true;
    if (!fault->isTold && now - fault->since >= kPatience) {
        fault->isTold = true;
        m_news.append(reason);
    }
}

void FileFaults::keep(const QString& path)
{
    const auto fault = m_faults.find(path);
    if (fault != m_faults.end()) {
        fault->isSeen = true;
    }
}

void FileFaults::endLook()
{
    for (auto fault = m_faults.begin(); fault != m_faults.end();) {
        if (fault->isSeen) {
            ++fault;
            continue;
        }
        if (fault->isTold && QFileInfo::exists(fault.key())) {
            m_news.append(QStringLiteral("%1 can be read now.").arg(fault.key()));
        }
        fault = m_faults.erase(fault);
    }
}

QString FileFaults::reasonFor(const QString& path)
{
    if (QFileInfo(path).isDir()) {
        return QStringLiteral("There is no right to look into %1.").arg(path);
    }
    for (const char* ending : {"", "-wal", "-shm"}) {
        const QFileInfo part(path + QLatin1String(ending));
        if (part.exists() && !part.isReadable()) {
            return QStringLiteral("There is no right to read %1.").arg(part.filePath());
        }
    }
    return QStringLiteral("%1 cannot be read: it is locked.").arg(path);
}

QStringList FileFaults::takeNews()
{
    return std::exchange(m_news, {});
}

} // namespace scnstore
