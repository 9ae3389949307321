#include "support/asnobody_posix.h"
#include "support/machinetree.h"
#include "support/testprogram.h"
#include "unit/visa/backgroundwork_posix.h"
#include "unit/visa/fakeusbdevice.h"
#include "unit/visa/peers_posix.h"
#include "visa/session.h"
#include "visa/usbtransport_posix.h"

#include <QElapsedTimer>
#include <QTest>

#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

using namespace scn;
using namespace scn::visa;

namespace {

constexpr qint64 kGenerousMs = 1000;
constexpr ViAttrState kLongMs = 20000;

struct Outcome
{
    ViStatus status;
    QByteArray bytes;
};

Outcome readFrom(Session& session, int count = 40959)
{
    QByteArray buffer(count, '\0');
    std::size_t received = 0;
    const ViStatus status = session.read(buffer.data(), std::size_t(count), received);
    return {status, buffer.left(int(received))};
}

ViStatus writeTo(Session& session, const QByteArray& bytes)
{
    std::size_t sent = 0;
    const ViStatus status = session.write(bytes.constData(), std::size_t(bytes.size()), sent);
    const bool isWhole = sent == (status == VI_SUCCESS ? std::size_t(bytes.size()) : 0);
    return isWhole ? status : VI_ERROR_SYSTEM_ERROR;
}

} // namespace

/// Sessions with USB instruments.
class TestUsbTransport : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void queryAndReply();
    void messageEndsTheReadWithoutALineFeed();
    void messageInPartsIsJoined();
    void timeoutIsTheSessionsAndReachesTheDriver();
    void lateReplyIsReadByTheNextRead();
    void lateReplyIsNotTakenForTheNext();
    void replyThatComesDuringTheWriteIsNotTakenForTheNext();
    void halfReadMessageIsForgotten();
    void wholeMessageNeedsNoClear();
    void stalledMessageIsNotSentTwice();
    void failedReadIsAnInputOutputError();
    void failedWriteIsAnInputOutputError();
    void unpluggedInstrumentIsALoss_data();
    void unpluggedInstrumentIsALoss();
    void closingEndsAWaitingRead();
    void closedSessionLetsGoOfTheDevice();
    void serialAttributesAreUnknown();
    void deviceFileIsFoundAndUsed();
    void instrumentThatIsNotThereIsNotFound();
    void missingRightsAreTold();

private:
    /// The fake is the session's, and lives while that or one of its transfers does.
    FakeUsbDevice* m_device = nullptr;
    std::unique_ptr<Session> m_session;
};

void TestUsbTransport::init()
{
    auto device = std::make_unique<FakeUsbDevice>();
    m_device = device.get();
    m_session =
        std::make_unique<Session>(std::make_unique<UsbTransport>(std::move(device), WakePipe()));
    m_session->setAttribute(VI_ATTR_TERMCHAR_EN, 1);
}

void TestUsbTransport::queryAndReply()
{
    m_device->answer("*IDN?\n", {{"maker,model,serial,1.0\n", true}});
    for (int i = 0; i < 50; ++i) {
        QCOMPARE(writeTo(*m_session, "*IDN?\n"), VI_SUCCESS);
        const Outcome reply = readFrom(*m_session);
        QCOMPARE(reply.status, VI_SUCCESS_TERM_CHAR);
        QCOMPARE(reply.bytes, QByteArray("maker,model,serial,1.0\n"));
    }
    QCOMPARE(m_device->sent().size(), 50);
    QCOMPARE(m_device->clears(), 0);
}

void TestUsbTransport::messageEndsTheReadWithoutALineFeed()
{
    m_device->answer("X?\n", {{"+1", true}});
    QCOMPARE(writeTo(*m_session, "X?\n"), VI_SUCCESS);
    const Outcome reply = readFrom(*m_session);
    QCOMPARE(reply.status, VI_SUCCESS);
    QCOMPARE(reply.bytes, QByteArray("+1"));
}

void TestUsbTransport::messageInPartsIsJoined()
{
    const QByteArray big(30000, 'b');
    m_device->answer("R?\n", {{big, false}, {"tail", false}, {"\n", true}});
    QCOMPARE(writeTo(*m_session, "R?\n"), VI_SUCCESS);
    const Outcome reply = readFrom(*m_session);
    QCOMPARE(reply.status, VI_SUCCESS_TERM_CHAR);
    QVERIFY(reply.bytes == big + "tail\n");
}

void TestUsbTransport::timeoutIsTheSessionsAndReachesTheDriver()
{
    m_session->setAttribute(VI_ATTR_TMO_VALUE, 50);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(readFrom(*m_session).status, VI_ERROR_TMO);
    QVERIFY(timer.elapsed() >= 50);
    QVERIFY(timer.elapsed() < 50 + kGenerousMs);
    // The driver gives up after the session, and not much.
    QVERIFY(m_device->timeout() > std::chrono::milliseconds(50));
    QVERIFY(m_device->timeout() <= std::chrono::milliseconds(250));
}

void TestUsbTransport::lateReplyIsReadByTheNextRead()
{
    m_session->setAttribute(VI_ATTR_TMO_VALUE, 50);
    m_device->ignoreTimeouts();
    QCOMPARE(readFrom(*m_session).status, VI_ERROR_TMO);
    m_device->bring({"late\n", true});
    m_session->setAttribute(VI_ATTR_TMO_VALUE, kLongMs);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("late\n"));
}

void TestUsbTransport::lateReplyIsNotTakenForTheNext()
{
    m_session->setAttribute(VI_ATTR_TMO_VALUE, 50);
    QCOMPARE(writeTo(*m_session, "FIRST?\n"), VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).status, VI_ERROR_TMO);
    m_device->bring({"reply to the first\n", true});
    m_device->answer("SECOND?\n", {{"reply to the second\n", true}});
    m_session->setAttribute(VI_ATTR_TMO_VALUE, kLongMs);
    QCOMPARE(writeTo(*m_session, "SECOND?\n"), VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("reply to the second\n"));
}

void TestUsbTransport::replyThatComesDuringTheWriteIsNotTakenForTheNext()
{
    m_session->setAttribute(VI_ATTR_TMO_VALUE, 50);
    m_device->ignoreTimeouts();
    m_device->answer("SECOND?\n", {{"reply to the second\n", true}});
    QCOMPARE(writeTo(*m_session, "FIRST?\n"), VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).status, VI_ERROR_TMO);
    m_session->setAttribute(VI_ATTR_TMO_VALUE, kLongMs);
    ViStatus status = VI_ERROR_IO;
    BackgroundWork writer([&] { status = writeTo(*m_session, "SECOND?\n"); });
    // The driver still waits for the first.
    QVERIFY(writer.waitUntilInPoll());
    m_device->bring({"reply to the first\n", true});
    writer.join();
    QCOMPARE(status, VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("reply to the second\n"));
}

void TestUsbTransport::halfReadMessageIsForgotten()
{
    m_device->answer("R?\n", {{"line\n", false}, {"more of it\n", true}});
    m_device->answer("X?\n", {{"x\n", true}});
    QCOMPARE(writeTo(*m_session, "R?\n"), VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("line\n"));
    QCOMPARE(writeTo(*m_session, "X?\n"), VI_SUCCESS);
    QCOMPARE(m_device->clears(), 1);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("x\n"));
}

void TestUsbTransport::wholeMessageNeedsNoClear()
{
    m_device->answer("R?\n", {{"line\nmore of it\n", true}});
    m_device->answer("X?\n", {{"x\n", true}});
    QCOMPARE(writeTo(*m_session, "R?\n"), VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("line\n"));
    QCOMPARE(writeTo(*m_session, "X?\n"), VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("x\n"));
    QCOMPARE(m_device->clears(), 0);
}

void TestUsbTransport::stalledMessageIsNotSentTwice()
{
    m_device->endSends(UsbDevice::Outcome::TimedOut);
    m_session->setAttribute(VI_ATTR_TMO_VALUE, kLongMs);
    QCOMPARE(writeTo(*m_session, "FIRST\n"), VI_ERROR_TMO);
    m_device->endSends(UsbDevice::Outcome::Done);
    QCOMPARE(writeTo(*m_session, "SECOND\n"), VI_SUCCESS);
    QCOMPARE(m_device->sent(), (QList<QByteArray>{"FIRST\n", "SECOND\n"}));
    QCOMPARE(m_device->clears(), 1);
}

void TestUsbTransport::failedReadIsAnInputOutputError()
{
    m_device->endReceptions(UsbDevice::Outcome::Failed);
    QCOMPARE(readFrom(*m_session).status, VI_ERROR_IO);
    m_device->endReceptions(UsbDevice::Outcome::Done);
    m_device->answer("X?\n", {{"x\n", true}});
    QCOMPARE(writeTo(*m_session, "X?\n"), VI_SUCCESS);
    QCOMPARE(m_device->clears(), 1);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("x\n"));
}

void TestUsbTransport::failedWriteIsAnInputOutputError()
{
    m_device->endSends(UsbDevice::Outcome::Failed);
    QCOMPARE(writeTo(*m_session, "X\n"), VI_ERROR_IO);
    m_device->endSends(UsbDevice::Outcome::Done);
    QCOMPARE(writeTo(*m_session, "X\n"), VI_SUCCESS);
}

void TestUsbTransport::unpluggedInstrumentIsALoss_data()
{
    QTest::addColumn<bool>("inRead");
    QTest::newRow("in a read") << true;
    QTest::newRow("in a write") << false;
}

void TestUsbTransport::unpluggedInstrumentIsALoss()
{
    QFETCH(bool, inRead);
    m_device->endReceptions(UsbDevice::Outcome::Lost);
    m_device->endSends(UsbDevice::Outcome::Lost);
    QCOMPARE(inRead ? readFrom(*m_session).status : writeTo(*m_session, "X\n"), VI_ERROR_CONN_LOST);
    QElapsedTimer timer;
    timer.start();
    m_session->setAttribute(VI_ATTR_TMO_VALUE, kLongMs);
    QCOMPARE(readFrom(*m_session).status, VI_ERROR_CONN_LOST);
    QCOMPARE(writeTo(*m_session, "X\n"), VI_ERROR_CONN_LOST);
    QVERIFY(timer.elapsed() < kGenerousMs);
}

void TestUsbTransport::closingEndsAWaitingRead()
{
    m_session->setAttribute(VI_ATTR_TMO_VALUE, kLongMs);
    Outcome outcome = {};
    BackgroundWork reader([&] { outcome = readFrom(*m_session); });
    QVERIFY(reader.waitUntilInPoll());
    QElapsedTimer timer;
    timer.start();
    m_session->close();
    reader.join();
    QCOMPARE(outcome.status, VI_ERROR_ABORT);
    QVERIFY(timer.elapsed() < kGenerousMs);
    m_device->bring({"", true});
}

void TestUsbTransport::closedSessionLetsGoOfTheDevice()
{
    const auto isGone = m_device->watchEnd();
    m_device->answer("X?\n", {{"x\n", true}});
    QCOMPARE(writeTo(*m_session, "X?\n"), VI_SUCCESS);
    QCOMPARE(readFrom(*m_session).bytes, QByteArray("x\n"));
    m_session.reset();
    // The thread of the last transfer may still be ending.
    QTRY_VERIFY(*isGone);
}

void TestUsbTransport::serialAttributesAreUnknown()
{
    QCOMPARE(m_session->setAttribute(VI_ATTR_ASRL_BAUD, 9600), VI_ERROR_NSUP_ATTR);
}

void TestUsbTransport::deviceFileIsFoundAndUsed()
{
    PtyPeer peer;
    termios settings = {};
    QCOMPARE(::tcgetattr(peer.descriptor(), &settings), 0);
    ::cfmakeraw(&settings);
    QCOMPARE(::tcsetattr(peer.descriptor(), TCSANOW, &settings), 0);
    const MachineTree machine;
    machine.addUsbInstrument(QStringLiteral("usbtmc1"), {});
    machine.link(QFile::decodeName(peer.device()), QStringLiteral("dev/usbtmc1"));

    OpenedTransport opened = openUsbInstrument(
        *parseResourceName("USB0::0x049F::0x606E::MY42::INSTR"), machine.root().toStdString());
    QCOMPARE(opened.status, VI_SUCCESS);
    Session session(std::move(opened.transport));
    session.setAttribute(VI_ATTR_TERMCHAR_EN, 1);
    QCOMPARE(writeTo(session, "*IDN?\n"), VI_SUCCESS);
    QCOMPARE(peer.receive(6), QByteArray("*IDN?\n"));
    QVERIFY(peer.send("maker,model\n"));
    QCOMPARE(readFrom(session).bytes, QByteArray("maker,model\n"));
}

void TestUsbTransport::instrumentThatIsNotThereIsNotFound()
{
    const MachineTree machine;
    const std::string root = machine.root().toStdString();
    const ResourceName name = *parseResourceName("USB0::0x049F::0x606E::MY42::INSTR");
    QCOMPARE(openUsbInstrument(name, root).status, VI_ERROR_RSRC_NFOUND);
    // Known to the kernel, but without a device file.
    machine.addUsbInstrument(QStringLiteral("usbtmc0"), {});
    QCOMPARE(openUsbInstrument(name, root).status, VI_ERROR_RSRC_NFOUND);
}

void TestUsbTransport::missingRightsAreTold()
{
    if (::geteuid() != 0) {
        SCN_SKIP(QStringLiteral("only root can become somebody else"));
    }
    const MachineTree machine;
    machine.addUsbInstrument(QStringLiteral("usbtmc0"), {});
    machine.write(QStringLiteral("dev/usbtmc0"));
    const std::string root = machine.root().toStdString();
    QCOMPARE(::chmod(root.c_str(), 0755), 0);
    QCOMPARE(::chmod((root + "/dev/usbtmc0").c_str(), 0660), 0);
    const AsNobody nobody;
    QVERIFY(nobody.isNobody());
    const ResourceName name = *parseResourceName("USB0::0x049F::0x606E::MY42::INSTR");
    QCOMPARE(openUsbInstrument(name, root).status, VI_ERROR_NPERMISSION);
}

SCN_TEST(TestUsbTransport, QCoreApplication)
#include "test_usbtransport.moc"
