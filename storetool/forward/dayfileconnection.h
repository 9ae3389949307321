#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace scnstore {

/// Ends a statement of SQLite.
struct StatementEnd
{
    void operator()(sqlite3_stmt* statement) const;
};

using Statement = std::unique_ptr<sqlite3_stmt, StatementEnd>;

/// A connection that reads a day file and never keeps its writer waiting. It stays good when the file is
/// deleted: what the writer adds until it closes the file can still be read.
class DayFileConnection
{
public:
    /// How the file is read. What is read without locks is good only if nothing was written meanwhile.
    enum class Mode {
        Shared,   ///< Beside a writer with a log, who never waits for a reader.
        Unlocked, ///< A writer would have to wait for locks: dataVersion() tells of a commit.
        Still, ///< Nobody writes, and no file is made beside it: the file's signature tells of a change.
    };

    /// Null if the file cannot be read now; `isDamaged` tells whether it ever can. `isIdle` means that nobody
    /// has the file open.
    static std::unique_ptr<DayFileConnection> open(const QString& path, bool isIdle,
                                                   bool* isDamaged);
    ~DayFileConnection();
    DayFileConnection(const DayFileConnection&) = delete;
    DayFileConnection& operator=(const DayFileConnection&) = delete;

    /// Null if it cannot be prepared.
    Statement prepare(const QByteArray& sql) const;

    /// The number in the first column of the first row; -1 on failure.
    qint64 number(const QByteArray& sql) const;

    bool begin() const { return run("BEGIN"); }
    void end() const { run("END"); }

    /// A number that changes with each commit of the writer; -1 if it cannot be told now.
    qint64 dataVersion() const { return number("PRAGMA data_version"); }

    /// Whether the path leads to another file by now, or to none.
    bool hasMoved() const;

    Mode mode() const { return m_mode; }

    /// Whether the last failure means that the file is damaged, not that it is being written.
    bool sawDamage() const;

    /// Whether the last failure means that the file lacks a table, or a column of one.
    bool sawMisfit() const;

    /// Whether the last failure means that the file got a log meanwhile, which this mode cannot read.
    bool sawLog() const;

private:
    DayFileConnection(sqlite3* database, Mode mode);

    static std::unique_ptr<DayFileConnection> connect(const QString& path, const char* parameters,
                                                      Mode mode);
    bool isReadable() const;
    bool run(const char* sql) const;

    sqlite3* const m_database;
    const Mode m_mode;
};

} // namespace scnstore
