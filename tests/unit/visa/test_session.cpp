#include "support/testprogram.h"
#include "visa/session.h"

#include <QByteArray>
#include <QList>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace scn::visa;

namespace {

/// A connection that follows its script, one entry per call.
class ScriptedTransport : public Transport
{
public:
    struct Input
    {
        State state;
        QByteArray bytes;
        bool endsMessage = false;
    };

    QList<Input> inputs;
    QList<Result> outputs;
    QList<Wait> waits;
    QByteArray written;
    bool endless = false;

    Result readSome(char* buffer, std::size_t size) override
    {
        if (endless) {
            std::fill_n(buffer, size, 'n');
            return {State::Moved, size};
        }
        if (inputs.isEmpty()) {
            return {State::Nothing, 0};
        }
        const Input input = inputs.takeFirst();
        std::copy(input.bytes.begin(), input.bytes.end(), buffer);
        return {input.state, static_cast<std::size_t>(input.bytes.size()), input.endsMessage};
    }

    Result writeSome(const char* bytes, std::size_t size) override
    {
        const Result result = outputs.isEmpty() ? Result{State::Moved, size} : outputs.takeFirst();
        written.append(bytes, static_cast<int>(result.count));
        return result;
    }

    Wait wait(Direction, const Deadline&) override
    {
        return waits.isEmpty() ? Wait::TimedOut : waits.takeFirst();
    }

    void interrupt() override {}

    ViStatus setSerialAttribute(ViAttr, ViAttrState) override { return VI_ERROR_NSUP_ATTR; }
};

using State = Transport::State;
using Wait = Transport::Wait;

struct Outcome
{
    ViStatus status;
    QByteArray bytes;
};

} // namespace

/// The rules of a session, apart from any real connection.
class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void readReportsHowTheWaitEnded_data();
    void readReportsHowTheWaitEnded();
    void writeReportsHowTheWaitEnded_data();
    void writeReportsHowTheWaitEnded();
    void endOfAMessageEndsTheRead();
    void endOfAMessageBehindALineIsKept();
    void messageThatJustFitsIsWhole();
    void messageOfNothingIsRead();
    void endOfADiscardedMessageIsForgotten();
    void hangUpWithoutInputIsALoss();
    void hangUpWithAMessageBehindItIsReadFirst();
    void hangUpInAWriteThatMovesNothingIsALoss();
    void refusedTransferIsAnInputOutputError();
    void lostConnectionStaysLost();
    void writeGoesOnWhereItStopped();
    void writeOfNothingDiscardsInput();
    void writeStartsAlthoughInputNeverEnds();

private:
    Outcome read();
    ViStatus write(const QByteArray& bytes);

    ScriptedTransport* m_transport = nullptr;
    std::unique_ptr<Session> m_session;
    std::size_t m_sent = 0;
};

void TestSession::init()
{
    auto transport = std::make_unique<ScriptedTransport>();
    m_transport = transport.get();
    m_session = std::make_unique<Session>(std::move(transport));
    m_session->setAttribute(VI_ATTR_TERMCHAR_EN, 1);
}

Outcome TestSession::read()
{
    char buffer[64];
    std::size_t received = 0;
    const ViStatus status = m_session->read(buffer, sizeof buffer, received);
    return {status, QByteArray(buffer, static_cast<int>(received))};
}

ViStatus TestSession::write(const QByteArray& bytes)
{
    return m_session->write(bytes.constData(), static_cast<std::size_t>(bytes.size()), m_sent);
}

void TestSession::readReportsHowTheWaitEnded_data()
{
    QTest::addColumn<int>("wait");
    QTest::addColumn<ViStatus>("status");
    QTest::newRow("timed out") << static_cast<int>(Wait::TimedOut) << VI_ERROR_TMO;
    QTest::newRow("interrupted") << static_cast<int>(Wait::Interrupted) << VI_ERROR_ABORT;
    QTest::newRow("failed") << static_cast<int>(Wait::Failed) << VI_ERROR_SYSTEM_ERROR;
}

void TestSession::readReportsHowTheWaitEnded()
{
    QFETCH(int, wait);
    QFETCH(ViStatus, status);
    m_transport->inputs = {{State::Moved, "part"}};
    m_transport->waits = {static_cast<Wait>(wait)};
    const Outcome outcome = read();
    QCOMPARE(outcome.status, status);
    QCOMPARE(outcome.bytes, QByteArray("part"));
}

void TestSession::writeReportsHowTheWaitEnded_data()
{
    readReportsHowTheWaitEnded_data();
}

void TestSession::writeReportsHowTheWaitEnded()
{
    QFETCH(int, wait);
    QFETCH(ViStatus, status);
    m_transport->outputs = {{State::Moved, 3}, {State::Nothing, 0}};
    m_transport->waits = {static_cast<Wait>(wait)};
    QCOMPARE(write("abcdef"), status);
    QCOMPARE(m_sent, std::size_t(3));
}

void TestSession::endOfAMessageEndsTheRead()
{
    m_transport->inputs = {{State::Moved, "no li"}, {State::Moved, "ne feed", true}};
    const Outcome outcome = read();
    QCOMPARE(outcome.status, VI_SUCCESS);
    QCOMPARE(outcome.bytes, QByteArray("no line feed"));
    QCOMPARE(read().status, VI_ERROR_TMO);
}

void TestSession::endOfAMessageBehindALineIsKept()
{
    m_transport->inputs = {{State::Moved, "line\nrest", true}, {State::Moved, "line\n", true}};
    QCOMPARE(read().status, VI_SUCCESS_TERM_CHAR);
    const Outcome rest = read();
    QCOMPARE(rest.status, VI_SUCCESS);
    QCOMPARE(rest.bytes, QByteArray("rest"));
    QCOMPARE(read().bytes, QByteArray("line\n"));
    // The line feed was the end: nothing is left of that message.
    QCOMPARE(read().status, VI_ERROR_TMO);
}

void TestSession::messageThatJustFitsIsWhole()
{
    m_transport->inputs = {{State::Moved, QByteArray(64, 'x'), true}};
    QCOMPARE(read().status, VI_SUCCESS);
    m_transport->inputs = {{State::Moved, QByteArray(65, 'x'), true}};
    QCOMPARE(read().status, VI_SUCCESS_MAX_CNT);
    QCOMPARE(read().status, VI_SUCCESS);
}

void TestSession::messageOfNothingIsRead()
{
    m_transport->inputs = {{State::Moved, "", true}, {State::Moved, "next\n", true}};
    const Outcome outcome = read();
    QCOMPARE(outcome.status, VI_SUCCESS);
    QCOMPARE(outcome.bytes, QByteArray());
    QCOMPARE(read().bytes, QByteArray("next\n"));
}

void TestSession::endOfADiscardedMessageIsForgotten()
{
    m_transport->inputs = {{State::Moved, "a late reply", true}};
    QCOMPARE(write("X?\n"), VI_SUCCESS);
    m_transport->inputs = {{State::Moved, "rep"}, {State::Moved, "ly\n", true}};
    QCOMPARE(read().bytes, QByteArray("reply\n"));
    // One of which a part has been read, too.
    m_transport->inputs = {{State::Moved, "line\nrest", true}};
    QCOMPARE(read().bytes, QByteArray("line\n"));
    QCOMPARE(write("X?\n"), VI_SUCCESS);
    QCOMPARE(read().status, VI_ERROR_TMO);
}

void TestSession::hangUpWithoutInputIsALoss()
{
    m_transport->waits = {Wait::HungUp};
    QCOMPARE(read().status, VI_ERROR_CONN_LOST);
}

void TestSession::hangUpWithAMessageBehindItIsReadFirst()
{
    m_transport->inputs = {{State::Nothing, {}}, {State::Moved, "last\n"}};
    m_transport->waits = {Wait::HungUp, Wait::HungUp};
    const Outcome outcome = read();
    QCOMPARE(outcome.status, VI_SUCCESS_TERM_CHAR);
    QCOMPARE(outcome.bytes, QByteArray("last\n"));
    QCOMPARE(read().status, VI_ERROR_CONN_LOST);
}

void TestSession::hangUpInAWriteThatMovesNothingIsALoss()
{
    m_transport->outputs = {{State::Nothing, 0}, {State::Nothing, 0}};
    m_transport->waits = {Wait::HungUp};
    QCOMPARE(write("x\n"), VI_ERROR_CONN_LOST);
    QCOMPARE(m_sent, std::size_t(0));
}

void TestSession::refusedTransferIsAnInputOutputError()
{
    m_transport->inputs = {{State::Failed, {}}};
    QCOMPARE(read().status, VI_ERROR_IO);
    m_transport->inputs = {{State::Failed, {}}};
    QCOMPARE(write("x\n"), VI_ERROR_IO);
    m_transport->outputs = {{State::Failed, 0}};
    QCOMPARE(write("x\n"), VI_ERROR_IO);
    // It is not a loss: the next one may succeed.
    QCOMPARE(write("x\n"), VI_SUCCESS);
}

void TestSession::lostConnectionStaysLost()
{
    m_transport->inputs = {{State::Lost, {}}, {State::Moved, "ghost\n"}};
    QCOMPARE(read().status, VI_ERROR_CONN_LOST);
    QCOMPARE(read().status, VI_ERROR_CONN_LOST);
    QCOMPARE(write("x\n"), VI_ERROR_CONN_LOST);
    QCOMPARE(m_transport->written, QByteArray());
}

void TestSession::writeGoesOnWhereItStopped()
{
    m_transport->outputs = {{State::Moved, 2}, {State::Nothing, 0}, {State::Moved, 1}};
    m_transport->waits = {Wait::Ready};
    QCOMPARE(write("abcdef\n"), VI_SUCCESS);
    QCOMPARE(m_sent, std::size_t(7));
    QCOMPARE(m_transport->written, QByteArray("abcdef\n"));
}

void TestSession::writeOfNothingDiscardsInput()
{
    m_transport->inputs = {{State::Moved, "old\n"}};
    QCOMPARE(write({}), VI_SUCCESS);
    QVERIFY(m_transport->inputs.isEmpty());
    QCOMPARE(read().status, VI_ERROR_TMO);
}

void TestSession::writeStartsAlthoughInputNeverEnds()
{
    m_transport->endless = true;
    QCOMPARE(write("STOP\n"), VI_SUCCESS);
    QCOMPARE(m_transport->written, QByteArray("STOP\n"));
}

SCN_TEST(TestSession, testprogram::NoApplication)
#include "test_session.moc"
