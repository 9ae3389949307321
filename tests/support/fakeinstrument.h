#pragma once

#include "support/fakevisa.h"

#include <QHash>
#include <QMap>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <functional>

class QThread;

/// A small instrument on the scripted VISA library. It answers every query of the program, and each
/// answer can be set. A setting by itself changes no answer. Thread-safe.
///
/// An answer belongs to a whole line ("FUNC? (@105)") or to all lines with that query ("FUNC?");
/// the whole line takes precedence. Queries without an answer get "+0".
class FakeInstrument
{
public:
    /// An idle instrument without modules whose channels measure DC voltage with autorange.
    FakeInstrument();
    ~FakeInstrument();
    FakeInstrument(const FakeInstrument&) = delete;
    FakeInstrument& operator=(const FakeInstrument&) = delete;

    /// The underlying VISA calls and their failures.
    FakeVisa& visa() { return m_visa; }

    /// Puts a module into a slot, for instance "SCN4005A".
    void putModule(int slot, const QString& model);

    void setReply(const QString& query, const QString& reply);

    /// Undoes every setReply() and putModule().
    void resetReplies();

    /// The next answer to exactly this line; after that the set one applies again.
    void setNextReply(const QString& line, const QString& reply);

    /// While silent, the instrument accepts every line and answers none.
    void setSilent(bool silent);

    /// Runs on the asking thread each time exactly this line arrives, before the answer.
    void whenAsked(const QString& line, const std::function<void()>& work);

    /// This thread's lines are answered but not recorded.
    void ignoreThread(const QThread* thread);

    /// All lines so far, in order.
    QStringList lines() const;

    /// The lines since the last call.
    QStringList takeLines();

private:
    QByteArray answer(const QString& line);
    QString replyTo(const QString& line);

    mutable QMutex m_mutex;
    QHash<QString, QString> m_replies;
    QMap<QString, QStringList> m_nextReplies;
    QHash<QString, std::function<void()>> m_work;
    QStringList m_lines;
    const QThread* m_ignoredThread = nullptr;
    bool m_isSilent = false;
    FakeVisa m_visa;
};
