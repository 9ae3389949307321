#pragma once

#include "visa/visatable.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QStringList>

#include <functional>

/// A scripted VISA library behind the table of seven operations. While an object lives it is what
/// every CDeviceVisa talks to, those made before it included; one may live at a time. It records
/// each call with its arguments and behaves like an instrument with an output queue: a line
/// written may put a reply there, a read takes from it up to a line feed, an empty queue is a
/// time-out at once. All of it is safe on any thread.
class FakeVisa
{
public:
    enum class Operation { OpenDefaultRM, Open, Close, SetAttribute, StatusDesc, Read, Write };

    /// Handle of the resource manager; sessions count upward from kFirstSession.
    static constexpr ViSession kResourceManager = 1;
    static constexpr ViSession kFirstSession = 100;

    FakeVisa();
    ~FakeVisa();
    FakeVisa(const FakeVisa&) = delete;
    FakeVisa& operator=(const FakeVisa&) = delete;

    // --- what the instrument says -------------------------------------------------------------

    /// Each line equal to the command (without its line feed) is answered with the reply and a
    /// line feed from now on.
    void setReply(const QByteArray& command, const QByteArray& reply);

    /// Called with each line written (without its line feed) that has no reply of its own; what
    /// it returns goes to the output queue as it is, so it brings its own line feed. Runs on the
    /// writing thread, with none of the fake's locks held.
    void setResponder(std::function<QByteArray(const QByteArray& line)> responder);

    /// Appends bytes to the output queue, as they are.
    void pushOutput(const QByteArray& bytes);

    /// The next reply to the command is not there in time: its first read is a time-out, and the
    /// bytes lie in the output queue from then on, in front of the reply to the next query.
    void delayNextReply(const QByteArray& command);

    /// The next read that no earlier script serves gives these bytes and this status, whatever the
    /// output queue holds. The bytes are cut at the count asked for.
    void scriptRead(ViStatus status, const QByteArray& bytes);

    // --- what goes wrong ------------------------------------------------------------------------

    /// From its call number `after` on (0: the next) the operation answers the status and does
    /// nothing else, `times` times (negative: for ever).
    void fail(Operation operation, ViStatus status, int after = 0, int times = -1);

    /// Ends what fail() asked of the operation.
    void recover(Operation operation);

    /// The link is lost: reads and writes answer "connection lost" until the next viOpen.
    void dropConnection();

    /// Text that viStatusDesc gives for a status, as bytes; "status 0x..." where none is set.
    void setStatusText(ViStatus status, const QByteArray& bytes);

    /// Time that each read takes, in milliseconds.
    void setReadDuration(int ms);

    // --- what happened --------------------------------------------------------------------------

    /// All calls in order, each as one line, for instance `viOpen(1, "ASRL1::INSTR", 0, 0)`,
    /// `viSetAttribute(100, 0x3FFF001A, 5000)`, `viWrite(100, "*IDN?\n")`, `viRead(100, 40959)`,
    /// `viStatusDesc(0, 0xBFFF0015)`, `viClose(100)`, `viOpenDefaultRM()`.
    QStringList calls() const;
    void clearCalls();

    /// The lines written so far, in order, without their line feeds.
    QStringList writtenLines() const;
    void clearWrittenLines();

    /// Bytes that nobody has read yet.
    QByteArray pendingOutput() const;

    /// Sessions open now, in the order of their opening.
    QList<ViSession> openSessions() const;

private:
    struct Failure
    {
        ViStatus status = VI_SUCCESS;
        int after = 0;
        int times = 0;
    };
    struct ScriptedRead
    {
        ViStatus status = VI_SUCCESS;
        QByteArray bytes;
    };

    static ViStatus SCN_VISA_CALL openDefaultRM(ViSession* resourceManager);
    static ViStatus SCN_VISA_CALL open(ViSession resourceManager, const ViChar* resource,
                                       ViAccessMode accessMode, ViUInt32 openTimeoutMs,
                                       ViSession* session);
    static ViStatus SCN_VISA_CALL close(ViObject object);
    static ViStatus SCN_VISA_CALL setAttribute(ViObject object, ViAttr attribute,
                                               ViAttrState value);
    static ViStatus SCN_VISA_CALL statusDesc(ViObject object, ViStatus status, ViChar* text);
    static ViStatus SCN_VISA_CALL read(ViSession session, ViByte* buffer, ViUInt32 count,
                                       ViUInt32* received);
    static ViStatus SCN_VISA_CALL write(ViSession session, const ViByte* buffer, ViUInt32 count,
                                        ViUInt32* sent);

    void record(const QString& call);
    ViStatus takeFailure(Operation operation);
    ViStatus takeRead(ViUInt32 count, QByteArray& bytes);
    void answer(const QByteArray& line);

    static const VisaTable s_table;
    static FakeVisa* s_current;

    mutable QMutex m_mutex;
    QStringList m_calls;
    QStringList m_writtenLines;
    QMap<Operation, Failure> m_failures;
    QHash<QByteArray, QByteArray> m_replies;
    QHash<ViStatus, QByteArray> m_statusTexts;
    std::function<QByteArray(const QByteArray&)> m_responder;
    QList<ScriptedRead> m_scriptedReads;
    QList<QByteArray> m_delayedCommands;
    QByteArray m_lateOutput;
    QByteArray m_output;
    QList<ViSession> m_openSessions;
    ViSession m_nextSession = kFirstSession;
    int m_readDurationMs = 0;
    bool m_connectionLost = false;
};
