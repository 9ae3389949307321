#pragma once

#include "support/fakevisa.h"

#include <QHash>
#include <QMap>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <functional>

class QThread;

/// A small instrument on the scripted VISA library: it answers every query of the program, and each
/// answer can be set. A setting changes no answer by itself. All of it is safe on any thread.
///
/// An answer belongs to a whole line ("FUNC? (@105)") or, without what follows the query, to all
/// lines of it ("FUNC?"); the whole line comes first. A query that nothing was set for is answered with "+0".
class FakeInstrument
{
public:
    /// An idle instrument without modules whose channels measure DC volts in automatic ranges.
    FakeInstrument();
    ~FakeInstrument();
    FakeInstrument(const FakeInstrument&) = delete;
    FakeInstrument& operator=(const FakeInstrument&) = delete;

    /// The calls below the lines, and their failures.
    FakeVisa& visa() { return m_visa; }

    /// Fills a slot, for instance with model "SCN4005A".
    void putModule(int slot, const QString& model);

    void setReply(const QString& query, const QString& reply);

    /// Takes back every setReply() and putModule().
    void resetReplies();

    /// The next answer to exactly this line; afterwards the set one again.
    void setNextReply(const QString& line, const QString& reply);

    /// While silent the instrument takes every line and answers none.
    void setSilent(bool silent);

    /// Runs on the asking thread when exactly this line comes, before it is answered; every time.
    void whenAsked(const QString& line, const std::function<void()>& work);

    /// The lines of this thread are answered but not noted.
    void ignoreThread(const QThread* thread);

    /// The lines so far, in order.
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
