#pragma once

#include "storage/fileidentity.h"
#include "storetool/runs/storedrun.h"

#include <QMap>
#include <QString>

#include <optional>

namespace scnstore {

/// Tells whether a run was deleted or replaced while it was read. What a read finds then may be less than
/// the run had.
class RunWatch
{
public:
    explicit RunWatch(const StoredRun& run);

    /// Whether the files of the beginning are still there.
    bool isUnbroken() const;

    /// Why a read that failed says nothing of the files, as a sentence: the run is gone, or another program has
    /// locked it. Nothing if neither is so.
    std::optional<QString> excuseFor(bool metLock) const;

private:
    QMap<QString, scn::FileIdentity> m_files; ///< By path.
};

} // namespace scnstore
