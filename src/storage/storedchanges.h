#pragma once

#include <QString>
#include <QtGlobal>

#include <limits>
#include <unordered_map>

namespace scn {

/// What tells whether a read of a curve would give the same points again.
struct StoredState
{
    quint64 doubts = 0;   ///< How often files changed in ways that no reading explains.
    quint64 setbacks = 0; ///< How often a reading was not newer than the one before it.
    qint64 lastTime = std::numeric_limits<qint64>::min(); ///< Time of the reading stored last.
    QString today; ///< Key of today's file, in which times to come are looked up.

    /// Whether the curve's readings up to `end` are the same in a later state.
    bool holdsUpTo(qint64 end, const StoredState& later) const
    {
        const bool onlyNewer = doubts == later.doubts && setbacks == later.setbacks;
        return onlyNewer && today == later.today && (lastTime >= end || lastTime == later.lastTime);
    }
};

/// Keeps track of what is written to each curve. Guarded by the store's mutex.
class StoredChanges
{
public:
    /// A reading of the curve has been handed to a file.
    void noteReading(int curveId, qint64 time)
    {
        StoredState& curve = m_curves[curveId];
        curve.setbacks += time <= curve.lastTime ? 1 : 0;
        curve.lastTime = time;
    }

    /// Files were replaced or emptied, or one could not be read: nothing that was read holds.
    void noteDoubt() { ++m_doubts; }

    StoredState stateOf(int curveId, const QString& today) const
    {
        const auto curve = m_curves.find(curveId);
        StoredState state = curve == m_curves.end() ? StoredState() : curve->second;
        state.doubts = m_doubts;
        state.today = today;
        return state;
    }

private:
    std::unordered_map<int, StoredState> m_curves;
    quint64 m_doubts = 0;
};

} // namespace scn
