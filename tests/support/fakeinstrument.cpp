#include "support/fakeinstrument.h"

#include <QMutexLocker>
#include <QThread>

namespace {

struct Answer
{
    const char* query;
    const char* reply;
};

constexpr Answer kAnswers[] = {
    {"*IDN?", "MAKER,SCN4070A,SN0001,1.00"},
    {"SYST:CTYP?", "MAKER,0,0,0"},
    {"SYST:ERR?", "+0,\"No error\""},
    {"STAT:OPER:COND?", "+256"},
    {"ROUT:SCAN?", "#13(@)"},
    {"ROUT:CHAN:LAB?", "\"\""},
    {"ROUT:CHAN:DEL:AUTO?", "1"},
    {"FUNC?", "\"VOLT\""},
    {"VOLT:DC:RANG:AUTO?", "1"},
    {"VOLT:DC:NPLC?", "+1.00000000E+00"},
    {"TEMP:TRAN:TYPE?", "TC"},
    {"TEMP:TRAN:TC:TYPE?", "J"},
    {"UNIT:TEMP?", "C"},
    {"CALC:SCAL:GAIN?", "+1.00000000E+00"},
    {"CALC:SCAL:UNIT?", "\"\""},
    {"CALC:SCAL:FUNC?", "SCAL"},
    {"CALC:SCAL:DBM:REF?", "+6.00000000E+02"},
    {"TRIG:SOUR?", "IMM"},
    {"TRIG:COUN?", "+9.9E+37"},
    {"MMEM:FORM:READ:RLIM?", "1"},
    {"MMEM:FORM:READ:RLIM:COUN?", "+6.5536E+04"},
    {"SYST:TIME:SCAN?", "2024,01,02,03,04,05.000"},
};

} // namespace

FakeInstrument::FakeInstrument()
{
    resetReplies();
    m_visa.setResponder([this](const QByteArray& line) { return answer(QString::fromUtf8(line)); });
}

FakeInstrument::~FakeInstrument() = default;

void FakeInstrument::putModule(int slot, const QString& model)
{
    setReply(QStringLiteral("SYST:CTYP? %1").arg(slot),
             QStringLiteral("MAKER,%1,0,1.00").arg(model));
}

void FakeInstrument::setReply(const QString& query, const QString& reply)
{
    const QMutexLocker locker(&m_mutex);
    m_replies.insert(query, reply);
}

void FakeInstrument::resetReplies()
{
    const QMutexLocker locker(&m_mutex);
    m_replies.clear();
    for (const Answer& answer : kAnswers) {
        m_replies.insert(QString::fromLatin1(answer.query), QString::fromLatin1(answer.reply));
    }
}

void FakeInstrument::setNextReply(const QString& line, const QString& reply)
{
    const QMutexLocker locker(&m_mutex);
    m_nextReplies[line].append(reply);
}

void FakeInstrument::setSilent(bool silent)
{
    const QMutexLocker locker(&m_mutex);
    m_isSilent = silent;
}

void FakeInstrument::whenAsked(const QString& line, const std::function<void()>& work)
{
    const QMutexLocker locker(&m_mutex);
    m_work.insert(line, work);
}

void FakeInstrument::ignoreThread(const QThread* thread)
{
    const QMutexLocker locker(&m_mutex);
    m_ignoredThread = thread;
}

QStringList FakeInstrument::lines() const
{
    const QMutexLocker locker(&m_mutex);
    return m_lines;
}

QStringList FakeInstrument::takeLines()
{
    const QMutexLocker locker(&m_mutex);
    QStringList lines;
    lines.swap(m_lines);
    return lines;
}

QByteArray FakeInstrument::answer(const QString& line)
{
    std::function<void()> work;
    {
        const QMutexLocker locker(&m_mutex);
        if (QThread::currentThread() != m_ignoredThread) {
            m_lines.append(line);
        }
        work = m_work.value(line);
    }
    if (work) {
        work();
    }
    const QMutexLocker locker(&m_mutex);
    if (!line.contains(QLatin1Char('?')) || m_isSilent) {
        return {};
    }
    return replyTo(line).toUtf8() + '\n';
}

/// Call with the mutex held.
QString FakeInstrument::replyTo(const QString& line)
{
    const auto next = m_nextReplies.find(line);
    if (next != m_nextReplies.end() && !next->isEmpty()) {
        return next->takeFirst();
    }
    const QString query = line.section(QLatin1Char(' '), 0, 0);
    return m_replies.value(line, m_replies.value(query, QStringLiteral("+0")));
}
