#pragma once

#include "storetool/runs/checkedrun.h"
#include "storetool/runs/runfile.h"

#include <QString>

namespace scnstore {

/// The check of one day file.
class FileCheck
{
public:
    /// Adds what it finds to `result`, which outlives it.
    FileCheck(const QString& path, bool isKnownToBeWhole, CheckedRun& result);

    void run();

private:
    /// The rows of a table,
    struct RowCounts
    {
        qint64 foreign = 0;   ///< those of another curve,
        qint64 senseless = 0; ///< with a time or a value that is no number,
        qint64 timed = 0;     ///< and those of the curve that have a time.
    };

    bool hasContent();
    void noteMissingWal();
    void checkStructure(const QString& table);
    void checkNames();
    void compareCatalogue(const RunFile::Catalogue& catalogue);
    void checkNumbers(const RunFile::Catalogue& catalogue);
    void checkTable(const RunFile::Catalogue& catalogue, const ListedTable& table);
    bool countRows(const ListedTable& table, RowCounts& rows);
    bool readTimes(const ListedTable& table, const QString& curve, CheckedTable& checked);
    void takeTime(qint64 time, CheckedCurve& curve, CheckedTable& checked) const;
    void tellDamage(const QString& what);

    QString m_path;
    const bool m_isKnownToBeWhole; ///< A missing WAL was checkpointed.
    bool m_hasWal;                 ///< Before the file is opened, which may create an empty one.
    RunFile m_file;
    CheckedRun& m_result;
    CheckedFile m_checked;
};

} // namespace scnstore
