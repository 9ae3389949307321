#include "storetool/runs/runwatch.h"

#include <algorithm>

namespace scnstore {

RunWatch::RunWatch(const StoredRun& run)
{
    for (const QString& path : run.dayFiles()) {
        m_files.insert(path, scn::fileIdentity(path));
    }
}

std::optional<QString> RunWatch::excuseFor(bool metLock) const
{
    if (!isUnbroken()) {
        return QStringLiteral("the run was deleted meanwhile. 'scn4070a-store list' shows where "
                              "it is kept.");
    }
    return metLock ? std::optional(
                         QStringLiteral("another program has locked the run's files. Try again."))
                   : std::nullopt;
}

bool RunWatch::isUnbroken() const
{
    const QStringList paths = m_files.keys();
    return std::all_of(paths.cbegin(), paths.cend(), [this](const QString& path) {
        return scn::fileIdentity(path) == m_files.value(path);
    });
}

} // namespace scnstore
