#include "support/testprogram.h"
#include "unit/visa/peers_posix.h"
#include "unit/visa/providersession.h"
#include "visa/statustext.h"

#include <QTest>

#include <limits>

using namespace scn::visa;

/// The seven operations apart from the wire: handles, arguments, attributes, texts.
class TestVisaProvider : public QObject
{
    Q_OBJECT

private slots:
    void eachResourceManagerHasItsOwnHandle();
    void openRefusesWhatItCannotOpen_data();
    void openRefusesWhatItCannotOpen();
    void openNeedsAResourceManager();
    void openTakesNoLocks();
    void missingBuffersAreRefused();
    void closedHandlesAreGone();
    void closingTheResourceManagerClosesItsSessions();
    void handlesAreNotGivenOutAgain();
    void resourceManagerIsNoSession();
    void socketAttributes_data();
    void socketAttributes();
    void statusHasNumberAndText_data();
    void statusHasNumberAndText();
    void statusTextNeedsNoSession();
    void unknownStatusGivesItsNumber();
    void textsFitTheBufferOfTheStandard();
};

void TestVisaProvider::eachResourceManagerHasItsOwnHandle()
{
    const VisaTable& visa = providerVisaTable();
    ViSession first = 0;
    ViSession second = 0;
    QCOMPARE(visa.viOpenDefaultRM(&first), VI_SUCCESS);
    QCOMPARE(visa.viOpenDefaultRM(&second), VI_SUCCESS);
    QVERIFY(first != 0);
    QVERIFY(second != 0);
    QVERIFY(first != second);
    QCOMPARE(visa.viClose(first), VI_SUCCESS);
    QCOMPARE(visa.viClose(second), VI_SUCCESS);
}

void TestVisaProvider::openRefusesWhatItCannotOpen_data()
{
    QTest::addColumn<QByteArray>("resource");
    QTest::addColumn<ViStatus>("status");
    QTest::newRow("empty") << QByteArray() << VI_ERROR_INV_RSRC_NAME;
    QTest::newRow("not a resource") << QByteArray("hello") << VI_ERROR_INV_RSRC_NAME;
    QTest::newRow("kind that is not known")
        << QByteArray("GPIB0::9::INSTR") << VI_ERROR_INV_RSRC_NAME;
    QTest::newRow("USB instrument that is not plugged in")
        << QByteArray("USB0::0::0::no such number::0::INSTR") << VI_ERROR_RSRC_NFOUND;
    QTest::newRow("missing device")
        << QByteArray("ASRL/dev/no-such-port::INSTR") << VI_ERROR_RSRC_NFOUND;
    QTest::newRow("device that is no terminal")
        << QByteArray("ASRL/dev/null::INSTR") << VI_ERROR_RSRC_NFOUND;
    QTest::newRow("directory") << QByteArray("ASRL/tmp::INSTR") << VI_ERROR_RSRC_NFOUND;
    QTest::newRow("path that is too long")
        << "ASRL/" + QByteArray(9000, 'a') << VI_ERROR_RSRC_NFOUND;
    QTest::newRow("host name that cannot be")
        << QByteArray("TCPIP0::no-such-host.invalid::5025::SOCKET") << VI_ERROR_RSRC_NFOUND;
}

void TestVisaProvider::openRefusesWhatItCannotOpen()
{
    QFETCH(QByteArray, resource);
    QFETCH(ViStatus, status);
    const VisaTable& visa = providerVisaTable();
    ViSession manager = 0;
    QCOMPARE(visa.viOpenDefaultRM(&manager), VI_SUCCESS);
    ViSession session = 99;
    // Without a network, a resolver may take longer than the usual limit.
    QCOMPARE(visa.viOpen(manager, resource.constData(), VI_NO_LOCK, 60000, &session), status);
    QCOMPARE(session, VI_NULL);
    visa.viClose(manager);
}

void TestVisaProvider::openNeedsAResourceManager()
{
    const VisaTable& visa = providerVisaTable();
    PtyPeer peer;
    ViSession session = 99;
    QCOMPARE(visa.viOpen(0, peer.resource().constData(), VI_NO_LOCK, 0, &session),
             VI_ERROR_INV_OBJECT);
    QCOMPARE(session, VI_NULL);
    ProviderSession open(peer.resource());
    QCOMPARE(open.openStatus(), VI_SUCCESS);
    QCOMPARE(visa.viOpen(open.handle(), peer.resource().constData(), VI_NO_LOCK, 0, &session),
             VI_ERROR_INV_OBJECT);
}

void TestVisaProvider::openTakesNoLocks()
{
    constexpr ViAccessMode kExclusiveLock = 1;
    const VisaTable& visa = providerVisaTable();
    PtyPeer peer;
    ProviderSession open(peer.resource());
    ViSession session = 99;
    const ViSession manager = open.resourceManager();
    QCOMPARE(visa.viOpen(manager, peer.resource().constData(), kExclusiveLock, 0, &session),
             VI_ERROR_INV_ACC_MODE);
    QCOMPARE(visa.viOpen(manager, peer.resource().constData(), VI_LOAD_CONFIG, 0, &session),
             VI_SUCCESS);
}

void TestVisaProvider::missingBuffersAreRefused()
{
    const VisaTable& visa = providerVisaTable();
    PtyPeer peer;
    ProviderSession open(peer.resource());
    QCOMPARE(visa.viOpenDefaultRM(nullptr), VI_ERROR_USER_BUF);
    QCOMPARE(visa.viOpen(open.resourceManager(), peer.resource().constData(), 0, 0, nullptr),
             VI_ERROR_USER_BUF);
    ViSession session = 0;
    QCOMPARE(visa.viOpen(open.resourceManager(), nullptr, 0, 0, &session), VI_ERROR_INV_RSRC_NAME);
    QCOMPARE(visa.viStatusDesc(open.handle(), VI_SUCCESS, nullptr), VI_ERROR_USER_BUF);
    QCOMPARE(visa.viRead(open.handle(), nullptr, 1, nullptr), VI_ERROR_USER_BUF);
    QCOMPARE(visa.viWrite(open.handle(), nullptr, 1, nullptr), VI_ERROR_USER_BUF);
    // The counts, however, are returned only on request.
    const ViByte line[] = {'x', '\n'};
    QCOMPARE(visa.viWrite(open.handle(), line, sizeof line, nullptr), VI_SUCCESS);
    QVERIFY(peer.send("y\n"));
    ViByte buffer[8] = {};
    QCOMPARE(visa.viRead(open.handle(), buffer, sizeof buffer, nullptr), VI_SUCCESS_TERM_CHAR);
    QCOMPARE(buffer[0], ViByte('y'));
}

void TestVisaProvider::closedHandlesAreGone()
{
    PtyPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.close(), VI_SUCCESS);
    QCOMPARE(session.close(), VI_ERROR_INV_OBJECT);
    QCOMPARE(session.set(VI_ATTR_TMO_VALUE, 1), VI_ERROR_INV_OBJECT);
    QCOMPARE(session.write("x\n"), VI_ERROR_INV_OBJECT);
    QCOMPARE(session.sent(), 0U);
    QCOMPARE(session.read().status, VI_ERROR_INV_OBJECT);
    const VisaTable& visa = providerVisaTable();
    QCOMPARE(visa.viClose(0), VI_ERROR_INV_OBJECT);
    QCOMPARE(visa.viClose(std::numeric_limits<ViSession>::max()), VI_ERROR_INV_OBJECT);
}

void TestVisaProvider::closingTheResourceManagerClosesItsSessions()
{
    PtyPeer peer;
    ProviderSession first(peer.resource());
    ProviderSession other(peer.resource());
    QCOMPARE(providerVisaTable().viClose(first.resourceManager()), VI_SUCCESS);
    QCOMPARE(first.set(VI_ATTR_TMO_VALUE, 1), VI_ERROR_INV_OBJECT);
    QCOMPARE(other.set(VI_ATTR_TMO_VALUE, 1), VI_SUCCESS);
}

void TestVisaProvider::handlesAreNotGivenOutAgain()
{
    PtyPeer peer;
    ViSession before = 0;
    {
        ProviderSession session(peer.resource());
        before = session.handle();
    }
    ProviderSession session(peer.resource());
    QVERIFY(session.handle() != before);
    QCOMPARE(providerVisaTable().viClose(before), VI_ERROR_INV_OBJECT);
}

void TestVisaProvider::resourceManagerIsNoSession()
{
    const VisaTable& visa = providerVisaTable();
    ViSession manager = 0;
    visa.viOpenDefaultRM(&manager);
    ViByte buffer[4] = {};
    ViUInt32 count = 7;
    QCOMPARE(visa.viRead(manager, buffer, sizeof buffer, &count), VI_ERROR_NSUP_OPER);
    QCOMPARE(count, 0U);
    count = 7;
    QCOMPARE(visa.viWrite(manager, buffer, sizeof buffer, &count), VI_ERROR_NSUP_OPER);
    QCOMPARE(count, 0U);
    QCOMPARE(visa.viSetAttribute(manager, VI_ATTR_TMO_VALUE, 1), VI_ERROR_NSUP_ATTR);
    visa.viClose(manager);
}

void TestVisaProvider::socketAttributes_data()
{
    QTest::addColumn<ViAttr>("attribute");
    QTest::addColumn<qulonglong>("value");
    QTest::addColumn<ViStatus>("status");
    QTest::newRow("time-out") << VI_ATTR_TMO_VALUE << 0ULL << VI_SUCCESS;
    QTest::newRow("no time-out") << VI_ATTR_TMO_VALUE << 0xFFFFFFFFULL << VI_SUCCESS;
    QTest::newRow("termination") << VI_ATTR_TERMCHAR << 13ULL << VI_SUCCESS;
    QTest::newRow("highest termination") << VI_ATTR_TERMCHAR << 255ULL << VI_SUCCESS;
    QTest::newRow("no byte") << VI_ATTR_TERMCHAR << 256ULL << VI_ERROR_NSUP_ATTR_STATE;
    QTest::newRow("termination off") << VI_ATTR_TERMCHAR_EN << 0ULL << VI_SUCCESS;
    QTest::newRow("no truth value") << VI_ATTR_TERMCHAR_EN << 2ULL << VI_ERROR_NSUP_ATTR_STATE;
    QTest::newRow("baud") << VI_ATTR_ASRL_BAUD << 57600ULL << VI_ERROR_NSUP_ATTR;
    QTest::newRow("data bits") << VI_ATTR_ASRL_DATA_BITS << 8ULL << VI_ERROR_NSUP_ATTR;
    QTest::newRow("parity") << VI_ATTR_ASRL_PARITY << 0ULL << VI_ERROR_NSUP_ATTR;
    QTest::newRow("stop bits") << VI_ATTR_ASRL_STOP_BITS << 10ULL << VI_ERROR_NSUP_ATTR;
    QTest::newRow("another") << ViAttr(0x3FFF0001) << 0ULL << VI_ERROR_NSUP_ATTR;
}

void TestVisaProvider::socketAttributes()
{
    QFETCH(ViAttr, attribute);
    QFETCH(qulonglong, value);
    QFETCH(ViStatus, status);
    TcpPeer peer;
    ProviderSession session(peer.resource());
    QCOMPARE(session.openStatus(), VI_SUCCESS);
    QCOMPARE(session.set(attribute, static_cast<ViAttrState>(value)), status);
}

void TestVisaProvider::statusHasNumberAndText_data()
{
    QTest::addColumn<ViStatus>("status");
    QTest::addColumn<quint32>("number");
    QTest::addColumn<QByteArray>("name");
#define STATUS_ROW(name, number)                                                                   \
    QTest::newRow(#name) << name << quint32(number) << QByteArray(#name)
    STATUS_ROW(VI_SUCCESS, 0);
    STATUS_ROW(VI_SUCCESS_TERM_CHAR, 0x3FFF0005);
    STATUS_ROW(VI_SUCCESS_MAX_CNT, 0x3FFF0006);
    STATUS_ROW(VI_WARN_CONFIG_NLOADED, 0x3FFF0077);
    STATUS_ROW(VI_SUCCESS_DEV_NPRESENT, 0x3FFF007D);
    STATUS_ROW(VI_WARN_NSUP_ATTR_STATE, 0x3FFF0084);
    STATUS_ROW(VI_WARN_UNKNOWN_STATUS, 0x3FFF0085);
    STATUS_ROW(VI_ERROR_SYSTEM_ERROR, 0xBFFF0000);
    STATUS_ROW(VI_ERROR_INV_OBJECT, 0xBFFF000E);
    STATUS_ROW(VI_ERROR_RSRC_LOCKED, 0xBFFF000F);
    STATUS_ROW(VI_ERROR_RSRC_NFOUND, 0xBFFF0011);
    STATUS_ROW(VI_ERROR_INV_RSRC_NAME, 0xBFFF0012);
    STATUS_ROW(VI_ERROR_INV_ACC_MODE, 0xBFFF0013);
    STATUS_ROW(VI_ERROR_TMO, 0xBFFF0015);
    STATUS_ROW(VI_ERROR_CLOSING_FAILED, 0xBFFF0016);
    STATUS_ROW(VI_ERROR_NSUP_ATTR, 0xBFFF001D);
    STATUS_ROW(VI_ERROR_NSUP_ATTR_STATE, 0xBFFF001E);
    STATUS_ROW(VI_ERROR_ATTR_READONLY, 0xBFFF001F);
    STATUS_ROW(VI_ERROR_ABORT, 0xBFFF0030);
    STATUS_ROW(VI_ERROR_ALLOC, 0xBFFF003C);
    STATUS_ROW(VI_ERROR_IO, 0xBFFF003E);
    STATUS_ROW(VI_ERROR_NSUP_OPER, 0xBFFF0067);
    STATUS_ROW(VI_ERROR_ASRL_PARITY, 0xBFFF006A);
    STATUS_ROW(VI_ERROR_ASRL_FRAMING, 0xBFFF006B);
    STATUS_ROW(VI_ERROR_ASRL_OVERRUN, 0xBFFF006C);
    STATUS_ROW(VI_ERROR_USER_BUF, 0xBFFF0071);
    STATUS_ROW(VI_ERROR_RSRC_BUSY, 0xBFFF0072);
    STATUS_ROW(VI_ERROR_INV_PARAMETER, 0xBFFF0078);
    STATUS_ROW(VI_ERROR_CONN_LOST, 0xBFFF00A6);
    STATUS_ROW(VI_ERROR_NPERMISSION, 0xBFFF00A8);
#undef STATUS_ROW
}

void TestVisaProvider::statusHasNumberAndText()
{
    QFETCH(ViStatus, status);
    QFETCH(quint32, number);
    QFETCH(QByteArray, name);
    QCOMPARE(static_cast<quint32>(status), number);
    QCOMPARE(status<0, number> 0x7FFFFFFFU);
    char text[kViStatusTextSize] = {};
    QCOMPARE(providerVisaTable().viStatusDesc(0, status, text), VI_SUCCESS);
    const QByteArray prefix = name + ": ";
    QVERIFY2(QByteArray(text).startsWith(prefix), text);
    QVERIFY2(QByteArray(text).size() > prefix.size(), text);
}

void TestVisaProvider::statusTextNeedsNoSession()
{
    const VisaTable& visa = providerVisaTable();
    PtyPeer peer;
    ProviderSession session(peer.resource());
    const ViSession closed = session.handle();
    session.close();
    for (const ViObject object : {VI_NULL, session.resourceManager(), closed}) {
        char text[kViStatusTextSize] = {};
        QCOMPARE(visa.viStatusDesc(object, VI_ERROR_TMO, text), VI_SUCCESS);
        QCOMPARE(
            QByteArray(text),
            QByteArray("VI_ERROR_TMO: the time-out expired before the operation was complete"));
    }
}

void TestVisaProvider::unknownStatusGivesItsNumber()
{
    char text[kViStatusTextSize] = {};
    QCOMPARE(providerVisaTable().viStatusDesc(0, viStatusCode(0xBFFF0999U), text),
             VI_WARN_UNKNOWN_STATUS);
    QCOMPARE(QByteArray(text), QByteArray("unknown status 0xBFFF0999"));
}

void TestVisaProvider::textsFitTheBufferOfTheStandard()
{
    int known = 0;
    for (const quint32 base : {0U, 0x3FFF0000U, 0xBFFF0000U}) {
        for (quint32 offset = 0; offset < 0x200; ++offset) {
            const ViStatus status = viStatusCode(base + offset);
            QVERIFY(statusText(status).size() < kViStatusTextSize);
            known += isKnownStatus(status) ? 1 : 0;
        }
    }
    QCOMPARE(known, 30);
}

SCN_TEST(TestVisaProvider, QCoreApplication)
#include "test_visaprovider.moc"
