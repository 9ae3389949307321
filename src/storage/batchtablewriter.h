#pragma once

#include "storage/attachmentstate.h"
#include "storage/curverecords.h"

#include <QMap>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

namespace scn {

/// Creates the tables of batches, in today's file or another.
class BatchTableWriter
{
public:
    /// Adds to the batches of the loaded file and to the tables seen. A failure in today's file is
    /// noted in its attachment.
    BatchTableWriter(QVector<DBBatchInfo>& list, QMap<QString, bool>& known, AttachmentState& today)
        : m_list(list)
        , m_known(known)
        , m_today(today)
    {
    }

    /// Ensures that a file has a curve's table of a batch. True if it is known to.
    bool ensure(const QSqlDatabase& db, int curveId, qint64 batchStart, const QString& batchName);

private:
    bool createBatchTable(const DBBatchInfo& info, const QSqlDatabase& db, int curveId);
    bool insertBatchRow(const DBBatchInfo& info, const QSqlDatabase& db, int curveId);

    QVector<DBBatchInfo>& m_list;
    QMap<QString, bool>& m_known;
    AttachmentState& m_today;
};

} // namespace scn
