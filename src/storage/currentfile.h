#pragma once

#include "storage/attachmentstate.h"
#include "storage/dayfiles.h"
#include "storage/fileidentity.h"
#include "storage/keptinserts.h"
#include "storage/readingtransaction.h"
#include "storage/savedextremes.h"
#include "storage/storememory.h"
#include "storage/timeslice.h"

#include <QString>

namespace scn {

/// Writes today's file: attaches it, repairs the attachment, registers curves, stores readings and
/// saves the extremes. Statements stay prepared on its connection, and only differences from what
/// the file holds are written. Guarded by the store's mutex.
class CurrentFile
{
public:
    /// Whether the registration of a new name is preceded by the pauses.
    enum class NewCurve { Pause, AtOnce };

    /// Works on the store's members, which outlive it.
    CurrentFile(StoreMemory& memory, const DayFiles& files);

    const QString& todayKey();
    bool isAttachedToday();

    /// Makes today's file the current one: after midnight, after a detachment, after the file has
    /// gone. Does nothing while it is current and in place.
    void attach();

    /// Reattaches the file after it was deleted, could not be opened or written, or was found
    /// incomplete. What is not available yet is retried every few seconds, not with every reading.
    void repair();

    /// Releases the file; attach() takes it up again.
    void detach();

    /// Drops all that is known of the file, and the statements.
    void forget();

    /// The id of a curve, registered if it is new here; -1 on failure.
    int registerCurve(const QString& name, NewCurve newCurve);

    /// Stores a reading in the file, which is open; false if that failed.
    bool store(const Reading& reading, const TimeSlice& slice,
               const KeptInserts::OpenTable& openTable);

    /// The same together with the extremes, which `widen` widens by the reading.
    bool storeWithExtremes(const Reading& reading, const TimeSlice& slice,
                           const KeptInserts::OpenTable& openTable,
                           const ReadingTransaction::WidenExtremes& widen);

    /// Saves the extremes in memory.
    bool saveExtremes();

    /// A write counts as use: otherwise the sweep of idle connections would close the writer's.
    void noteUse();

    /// A curve's tables are about to be dropped.
    void forgetCurve(int curveId);

    AttachmentState& attachment() { return m_attachment; }
    SavedExtremes& extremes() { return m_extremes; }

private:
    void open();
    bool reopen();
    void takeUp();
    bool registerKnownCurves();
    void load();
    bool isGone() const;
    bool noteOutcome(const KeptInserts::Outcome& outcome);

    int registerCurveInFile(const QString& name, NewCurve newCurve);
    int findCurve(const QString& name);
    int insertCurve(const QString& name);

    StoreMemory& m_memory;
    const DayFiles& m_files;
    AttachmentState m_attachment;
    SavedExtremes m_extremes{m_attachment};
    KeptInserts m_inserts;
    ReadingTransaction m_transaction{m_inserts, m_extremes};
    FileIdentity m_identity; ///< What the connection was opened on.
    TimeSliceCache m_nowSlice;
    qint64 m_lastUseNoted = 0;
    qint64 m_lastRepair = 0;
};

} // namespace scn
