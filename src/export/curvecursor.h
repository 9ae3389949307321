#pragma once

#include "export/batchtables.h"
#include "storage/fileidentity.h"
#include "storage/lockedquery.h"
#include "storage/samplecolumn.h"

#include <QSharedPointer>
#include <QSqlDatabase>
#include <QVector>

#include <cstddef>
#include <memory>

class CurveDataDB;

namespace scn {

/// Iterates over the stored samples of one curve in order of time, table by table and file by file,
/// with one forward-only query at a time on the pooled connections.
///
/// It holds a connection while it reads from its file, and the connection's lock for one block of
/// rows at a time. On a store that only reads, whose files another process may write, its query rests
/// between two blocks, so that SQLite's own lock is never held for longer. Any thread, one at a
/// time.
class CurveCursor
{
public:
    /// What to read of each sample: the time costs a fifth of the reading.
    enum Columns { TimesAndValues, ValuesOnly };

    /// A cursor at the first sample in the range (ms since the epoch, both included).
    CurveCursor(CurveDataDB& store, int curveId, QVector<BatchTable> tables, qint64 start,
                qint64 end, Columns columns);
    ~CurveCursor();
    Q_DISABLE_COPY_MOVE(CurveCursor)

    int curveId() const { return m_curveId; }

    /// Whether a sample is left.
    bool isValid() const { return m_valid; }

    /// The samples could not be read to the end: the connection was closed, the file has gone, or
    /// reading failed. The cursor is no longer valid.
    bool hasFailed() const { return m_failed; }

    /// Appends the next samples until the column holds `limit` or none is left. Without times,
    /// theirs is 0.
    void read(SampleColumn& column, std::size_t limit);

private:
    bool openNextTable();
    bool openTable(const BatchTable& table);
    bool isInPlace(const BatchTable& table);
    bool isListedIn(const BatchTable& table);
    bool startQuery(const BatchTable& table);
    bool takeFirstRow(const BatchTable& table);
    void rest();
    bool resume();
    void readTable(SampleColumn& column, std::size_t limit);
    bool failToRead(const QString& cause);
    bool fail();
    void release();

    CurveDataDB& m_store;
    int m_curveId;
    QSharedPointer<QSqlDatabase> m_connection;
    QString m_path; ///< Of the file that the connection leads to.
    FileIdentity m_file;
    std::unique_ptr<LockedQuery> m_query;
    bool m_valid = false;
    bool m_failed = false;
    Sample m_current{0, 0.0}; ///< The next sample, if valid.
    QVector<BatchTable> m_tables;
    int m_nextTable = 0;
    qint64 m_start;
    qint64 m_end;
    Columns m_columns;
    bool m_rests;             ///< Between two blocks.
    bool m_isResting = false; ///< The query goes on after the current sample.
};

} // namespace scn
