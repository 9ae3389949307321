#pragma once

#include "visa/visatable.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QStringList>

#include <functional>

/// A scripted VISA library behind the table of seven operations. While it exists, every CDeviceVisa
/// talks to it, including those created earlier; only one may exist at a time. It records each call
/// with its arguments and acts as an instrument with an output queue: a written line may put a
/// reply there, a read takes from it up to a line feed, and an empty queue times out at once.
/// Thread-safe.
class FakeVisa
{
public:
    enum class Operation { OpenDefaultRM, Open, Close, SetAttribute, StatusDesc, Read, Write };

    /// Handle of the resource manager; sessions count up from kFirstSession.
    static constexpr scn::visa::ViSession kResourceManager = 1;
    static constexpr scn::visa::ViSession kFirstSession = 100;

    FakeVisa();
    ~FakeVisa();
    FakeVisa(const FakeVisa&) = delete;
    FakeVisa& operator=(const FakeVisa&) = delete;

    // --- what the instrument says -------------------------------------------------------------

    /// From now on each line equal to the command (without its line feed) is answered with the
    /// reply and a line feed.
    void setReply(const QByteArray& command, const QByteArray& reply);

    /// Called with each written line (without its line feed) that has no reply of its own; the
    /// result goes to the output queue unchanged, so it must end in a line feed. Runs on the
    /// writing thread, with none of the fake's locks held.
    void setResponder(std::function<QByteArray(const QByteArray& line)> responder);

    /// Appends bytes to the output queue unchanged.
    void pushOutput(const QByteArray& bytes);

    /// The next reply to the command is late: its first read times out, after which the bytes are
    /// in the output queue, ahead of the reply to the next query.
    void delayNextReply(const QByteArray& command);

    /// The next read that no earlier script serves returns these bytes and this status, regardless
    /// of the output queue. The bytes are cut at the requested count.
    void scriptRead(scn::visa::ViStatus status, const QByteArray& bytes);

    // --- what goes wrong ------------------------------------------------------------------------

    /// From call number `after` on (0: the next) the operation returns the status and does nothing
    /// else, `times` times (negative: always).
    void fail(Operation operation, scn::visa::ViStatus status, int after = 0, int times = -1);

    /// Cancels fail() for the operation.
    void recover(Operation operation);

    /// The link is lost: reads and writes return "connection lost" until the next viOpen.
    void dropConnection();

    /// Text that viStatusDesc returns for a status, as bytes; by default "status 0x...".
    void setStatusText(scn::visa::ViStatus status, const QByteArray& bytes);

    /// Duration of each read, in milliseconds: for a slow instrument, and for what other threads do
    /// during an exchange without a trace that a test could wait for.
    void setReadDuration(int ms);

    // --- what happened --------------------------------------------------------------------------

    /// All calls in order, one line each, for instance `viOpen(1, "ASRL1::INSTR", 0, 0)`,
    /// `viSetAttribute(100, 0x3FFF001A, 5000)`, `viWrite(100, "*IDN?\n")`, `viRead(100, 40959)`,
    /// `viStatusDesc(0, 0xBFFF0015)`, `viClose(100)`, `viOpenDefaultRM()`.
    QStringList calls() const;
    void clearCalls();

    /// All lines written so far, in order, without line feeds.
    QStringList writtenLines() const;

    /// Bytes not yet read.
    QByteArray pendingOutput() const;

    /// Open sessions, in the order they were opened.
    QList<scn::visa::ViSession> openSessions() const;

private:
    struct Failure
    {
        scn::visa::ViStatus status = scn::visa::VI_SUCCESS;
        int after = 0;
        int times = 0;
    };
    struct ScriptedRead
    {
        scn::visa::ViStatus status = scn::visa::VI_SUCCESS;
        QByteArray bytes;
    };

    static scn::visa::ViStatus SCN_VISA_CALL openDefaultRM(scn::visa::ViSession* resourceManager);
    static scn::visa::ViStatus SCN_VISA_CALL open(scn::visa::ViSession resourceManager,
                                                  const scn::visa::ViChar* resource,
                                                  scn::visa::ViAccessMode accessMode,
                                                  scn::visa::ViUInt32 openTimeoutMs,
                                                  scn::visa::ViSession* session);
    static scn::visa::ViStatus SCN_VISA_CALL close(scn::visa::ViObject object);
    static scn::visa::ViStatus SCN_VISA_CALL setAttribute(scn::visa::ViObject object,
                                                          scn::visa::ViAttr attribute,
                                                          scn::visa::ViAttrState value);
    static scn::visa::ViStatus SCN_VISA_CALL statusDesc(scn::visa::ViObject object,
                                                        scn::visa::ViStatus status,
                                                        scn::visa::ViChar* text);
    static scn::visa::ViStatus SCN_VISA_CALL read(scn::visa::ViSession session,
                                                  scn::visa::ViByte* buffer,
                                                  scn::visa::ViUInt32 count,
                                                  scn::visa::ViUInt32* received);
    static scn::visa::ViStatus SCN_VISA_CALL write(scn::visa::ViSession session,
                                                   const scn::visa::ViByte* buffer,
                                                   scn::visa::ViUInt32 count,
                                                   scn::visa::ViUInt32* sent);

    void record(const QString& call);
    scn::visa::ViStatus takeFailure(Operation operation);
    scn::visa::ViStatus takeRead(scn::visa::ViUInt32 count, QByteArray& bytes);
    void answer(const QByteArray& line);

    static const scn::visa::VisaTable s_table;
    static FakeVisa* s_current;

    mutable QMutex m_mutex;
    QStringList m_calls;
    QStringList m_writtenLines;
    QMap<Operation, Failure> m_failures;
    QHash<QByteArray, QByteArray> m_replies;
    QHash<scn::visa::ViStatus, QByteArray> m_statusTexts;
    std::function<QByteArray(const QByteArray&)> m_responder;
    QList<ScriptedRead> m_scriptedReads;
    QList<QByteArray> m_delayedCommands;
    QByteArray m_lateOutput;
    QByteArray m_output;
    QList<scn::visa::ViSession> m_openSessions;
    scn::visa::ViSession m_nextSession = kFirstSession;
    int m_readDurationMs = 0;
    bool m_connectionLost = false;
};
