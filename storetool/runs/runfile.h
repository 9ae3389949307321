#pragma once

#include <QMap>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <functional>
#include <initializer_list>

namespace scnstore {

/// A batch table as its file lists it.
struct ListedTable
{
    int curveId = -1;
    QString name;
    qint64 first = 0; ///< The bounds of the batch, ms since the epoch.
    qint64 last = 0;
};

/// One day file, open to be read and nothing else. Each call is a transaction of its own. What fails
/// leaves a sentence.
class RunFile
{
public:
    explicit RunFile(const QString& path);
    ~RunFile();
    RunFile(const RunFile&) = delete;
    RunFile& operator=(const RunFile&) = delete;

    QString path() const { return m_path; }

    /// The file's name, without its folder.
    QString name() const;

    /// What failed last; empty after a success.
    QString failure() const { return m_failure; }

    /// Whether that was another program's lock, which says nothing of the file.
    bool metLock() const { return m_metLock; }

    using Row = std::function<void(const QSqlQuery& row)>;

    /// Runs a statement and hands out its rows. False if it failed, on the way too.
    bool query(const QString& sql, std::initializer_list<QVariant> values, const Row& row);

    /// The same for columns that hold numbers. It fails, too, where one holds something else.
    bool queryNumbers(const QString& sql, std::initializer_list<QVariant> values, const Row& row);

    /// What the base tables say: the curves by id, the tables, and the names of all tables that exist,
    /// as of one moment.
    struct Catalogue
    {
        QMap<int, QString> curves;
        QVector<ListedTable> tables;
        QStringList existing;
    };

    /// False if any of it could not be read.
    bool readCatalogue(Catalogue& catalogue);

private:
    QString m_path;
    QSqlDatabase m_database;
    QString m_failure;
    bool m_metLock = false;
};

} // namespace scnstore
