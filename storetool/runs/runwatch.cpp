#include "storetool/runs/runwatch.h"

#include <algorithm>

namespace scnstore {

RunWatch::RunWatch(const StoredRun& run)
{
    for (const QString& path : run.dayFiles()) {
        m_files.insert(path, scn::fileIdentity(path));
    }
}

bool RunWatch::isUnbroken() const
{
    const QStringList paths = m_files.keys();
    return std::all_of(paths.cbegin(), paths.cend(), [this](const QString& path) {
        return scn::fileIdentity(path) == m_files.value(path);
    });
}

} // namespace scnstore
