#pragma once

#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>

#include <functional>

/// A connection without a database: a script answers each statement. It produces what files cannot
/// be made to do at a given statement.
class ScriptedConnection
{
public:
    enum class Answer {
        Done,          ///< Without rows.
        DoneAndClosed, ///< The connection closes when the query is gone.
        MissingTable,
        ReadOnly,
    };

    /// Gets the statement's text.
    using Script = std::function<Answer(const QString&)>;

    explicit ScriptedConnection(Script script);
    ~ScriptedConnection();
    ScriptedConnection(const ScriptedConnection&) = delete;
    ScriptedConnection& operator=(const ScriptedConnection&) = delete;

    QSharedPointer<QSqlDatabase> database() const { return m_database; }

private:
    QSharedPointer<QSqlDatabase> m_database;
};
