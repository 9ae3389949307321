#include "support/fakevisa.h"

#include "instrument/visabinding.h"

#include <QMutexLocker>
#include <QThread>

#include <algorithm>
#include <cstring>

using namespace scn::visa;

const VisaTable FakeVisa::s_table = {FakeVisa::openDefaultRM, FakeVisa::open,       FakeVisa::close,
                                     FakeVisa::setAttribute,  FakeVisa::statusDesc, FakeVisa::read,
                                     FakeVisa::write};
FakeVisa* FakeVisa::s_current = nullptr;

namespace {

QString hexadecimal(quint32 number)
{
    return QLatin1String("0x") +
           QString::number(number, 16).toUpper().rightJustified(8, QLatin1Char('0'));
}

/// Bytes as they would appear between quotes in source code.
QString quoted(QByteArray bytes)
{
    bytes.replace('\n', "\\n").replace('\r', "\\r");
    return QLatin1Char('"') + QString::fromUtf8(bytes) + QLatin1Char('"');
}

} // namespace

FakeVisa::FakeVisa()
{
    Q_ASSERT(!s_current);
    s_current = this;
    scn::visabinding::setTable(&s_table);
}

FakeVisa::~FakeVisa()
{
    scn::visabinding::setTable(nullptr);
    s_current = nullptr;
}

void FakeVisa::setReply(const QByteArray& command, const QByteArray& reply)
{
    const QMutexLocker locker(&m_mutex);
    m_replies.insert(command, reply + '\n');
}

void FakeVisa::setResponder(std::function<QByteArray(const QByteArray& line)> responder)
{
    const QMutexLocker locker(&m_mutex);
    m_responder = std::move(responder);
}

void FakeVisa::pushOutput(const QByteArray& bytes)
{
    const QMutexLocker locker(&m_mutex);
    m_output += bytes;
}

void FakeVisa::delayNextReply(const QByteArray& command)
{
    const QMutexLocker locker(&m_mutex);
    m_delayedCommands.append(command);
}

void FakeVisa::scriptRead(ViStatus status, const QByteArray& bytes)
{
    const QMutexLocker locker(&m_mutex);
    m_scriptedReads.append({status, bytes});
}

void FakeVisa::fail(Operation operation, ViStatus status, int after, int times)
{
    const QMutexLocker locker(&m_mutex);
    m_failures.insert(operation, {status, after, times});
}

void FakeVisa::recover(Operation operation)
{
    const QMutexLocker locker(&m_mutex);
    m_failures.remove(operation);
}

void FakeVisa::dropConnection()
{
    const QMutexLocker locker(&m_mutex);
    m_connectionLost = true;
}

void FakeVisa::setStatusText(ViStatus status, const QByteArray& bytes)
{
    const QMutexLocker locker(&m_mutex);
    m_statusTexts.insert(status, bytes);
}

void FakeVisa::setReadDuration(int ms)
{
    const QMutexLocker locker(&m_mutex);
    m_readDurationMs = ms;
}

QStringList FakeVisa::calls() const
{
    const QMutexLocker locker(&m_mutex);
    return m_calls;
}

void FakeVisa::clearCalls()
{
    const QMutexLocker locker(&m_mutex);
    m_calls.clear();
}

QStringList FakeVisa::writtenLines() const
{
    const QMutexLocker locker(&m_mutex);
    return m_writtenLines;
}

QByteArray FakeVisa::pendingOutput() const
{
    const QMutexLocker locker(&m_mutex);
    return m_output;
}

QList<ViSession> FakeVisa::openSessions() const
{
    const QMutexLocker locker(&m_mutex);
    return m_openSessions;
}

ViStatus FakeVisa::openDefaultRM(ViSession* resourceManager)
{
    FakeVisa& fake = *s_current;
    const QMutexLocker locker(&fake.m_mutex);
    fake.record(QStringLiteral("viOpenDefaultRM()"));
    const ViStatus status = fake.takeFailure(Operation::OpenDefaultRM);
    *resourceManager = status < VI_SUCCESS ? VI_NULL : kResourceManager;
    return status;
}

ViStatus FakeVisa::open(ViSession resourceManager, const ViChar* resource, ViAccessMode accessMode,
                        ViUInt32 openTimeoutMs, ViSession* session)
{
    FakeVisa& fake = *s_current;
    const QMutexLocker locker(&fake.m_mutex);
    fake.record(QStringLiteral("viOpen(%1, %2, %3, %4)")
                    .arg(QString::number(resourceManager), quoted(resource),
                         QString::number(accessMode), QString::number(openTimeoutMs)));
    const ViStatus status = fake.takeFailure(Operation::Open);
    *session = VI_NULL;
    if (status < VI_SUCCESS) {
        return status;
    }
    fake.m_connectionLost = false;
    fake.m_output.clear();
    fake.m_lateOutput.clear();
    *session = fake.m_nextSession++;
    fake.m_openSessions.append(*session);
    return status;
}

ViStatus FakeVisa::close(ViObject object)
{
    FakeVisa& fake = *s_current;
    const QMutexLocker locker(&fake.m_mutex);
    fake.record(QStringLiteral("viClose(%1)").arg(object));
    fake.m_openSessions.removeAll(object);
    return fake.takeFailure(Operation::Close);
}

ViStatus FakeVisa::setAttribute(ViObject object, ViAttr attribute, ViAttrState value)
{
    FakeVisa& fake = *s_current;
    const QMutexLocker locker(&fake.m_mutex);
    fake.record(QStringLiteral("viSetAttribute(%1, %2, %3)")
                    .arg(QString::number(object), hexadecimal(attribute), QString::number(value)));
    return fake.takeFailure(Operation::SetAttribute);
}

ViStatus FakeVisa::statusDesc(ViObject object, ViStatus status, ViChar* text)
{
    FakeVisa& fake = *s_current;
    const QMutexLocker locker(&fake.m_mutex);
    const QString number = hexadecimal(static_cast<quint32>(status));
    fake.record(QStringLiteral("viStatusDesc(%1, %2)").arg(QString::number(object), number));
    const ViStatus failure = fake.takeFailure(Operation::StatusDesc);
    if (failure != VI_SUCCESS) {
        return failure;
    }
    const QByteArray bytes =
        fake.m_statusTexts.value(status, (QLatin1String("status ") + number).toUtf8());
    std::memcpy(
        text, bytes.constData(),
        std::min<std::size_t>(static_cast<std::size_t>(bytes.size()) + 1, kViStatusTextSize));
    return VI_SUCCESS;
}

ViStatus FakeVisa::read(ViSession session, ViByte* buffer, ViUInt32 count, ViUInt32* received)
{
    FakeVisa& fake = *s_current;
    QMutexLocker locker(&fake.m_mutex);
    fake.record(QStringLiteral("viRead(%1, %2)").arg(session).arg(count));
    if (fake.m_readDurationMs > 0) {
        const auto duration = static_cast<unsigned long>(fake.m_readDurationMs);
        locker.unlock();
        QThread::msleep(duration);
        locker.relock();
    }
    QByteArray bytes;
    ViStatus status = fake.takeFailure(Operation::Read);
    if (status == VI_SUCCESS) {
        status = fake.m_connectionLost ? VI_ERROR_CONN_LOST : fake.takeRead(count, bytes);
    }
    std::memcpy(buffer, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    *received = static_cast<ViUInt32>(bytes.size());
    return status;
}

ViStatus FakeVisa::write(ViSession session, const ViByte* buffer, ViUInt32 count, ViUInt32* sent)
{
    FakeVisa& fake = *s_current;
    QMutexLocker locker(&fake.m_mutex);
    QByteArray line(reinterpret_cast<const char*>(buffer), static_cast<int>(count));
    fake.record(QStringLiteral("viWrite(%1, %2)").arg(QString::number(session), quoted(line)));
    *sent = 0;
    const ViStatus status =
        fake.m_connectionLost ? VI_ERROR_CONN_LOST : fake.takeFailure(Operation::Write);
    if (status != VI_SUCCESS) {
        return status;
    }
    *sent = count;
    if (line.endsWith('\n')) {
        line.chop(1);
    }
    fake.m_writtenLines.append(QString::fromUtf8(line));
    locker.unlock();
    fake.answer(line);
    return VI_SUCCESS;
}

/// Records a call. Call with the mutex held.
void FakeVisa::record(const QString& call)
{
    m_calls.append(call);
}

/// What fail() has this call return, or VI_SUCCESS. Call with the mutex held.
ViStatus FakeVisa::takeFailure(Operation operation)
{
    const auto found = m_failures.find(operation);
    if (found == m_failures.end()) {
        return VI_SUCCESS;
    }
    if (found->after > 0) {
        --found->after;
        return VI_SUCCESS;
    }
    if (found->times == 0) {
        return VI_SUCCESS;
    }
    if (found->times > 0) {
        --found->times;
    }
    return found->status;
}

/// The result of a read of this many bytes. Call with the mutex held.
ViStatus FakeVisa::takeRead(ViUInt32 count, QByteArray& bytes)
{
    const int wanted = static_cast<int>(count);
    if (!m_scriptedReads.isEmpty()) {
        const ScriptedRead scripted = m_scriptedReads.takeFirst();
        bytes = scripted.bytes.left(wanted);
        return scripted.status;
    }
    if (m_output.isEmpty()) {
        m_output = m_lateOutput;
        m_lateOutput.clear();
        return VI_ERROR_TMO;
    }
    const int end = m_output.indexOf('\n') + 1;
    const bool wholeLine = end > 0 && end <= wanted;
    if (!wholeLine && m_output.size() < wanted) {
        return VI_ERROR_TMO;
    }
    bytes = m_output.left(wholeLine ? end : wanted);
    m_output.remove(0, bytes.size());
    return wholeLine ? VI_SUCCESS_TERM_CHAR : VI_SUCCESS_MAX_CNT;
}

/// Puts the reply to a line into the output queue. Call without the mutex.
void FakeVisa::answer(const QByteArray& line)
{
    QMutexLocker locker(&m_mutex);
    QByteArray reply = m_replies.value(line);
    if (reply.isEmpty() && m_responder) {
        const auto responder = m_responder;
        locker.unlock();
        reply = responder(line);
        locker.relock();
    }
    if (m_delayedCommands.removeOne(line)) {
        m_lateOutput += reply;
    } else {
        m_output += reply;
    }
}
