#include "instrument/exchange.h"
#include "support/fakevisa.h"
#include "support/testprogram.h"

#include <QtTest>

#include <memory>

using scn::ExchangeResult;

class TestExchange : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void exchangeHasFiveSeconds();
    void resultTellsHowItEnded();
    void severalEndWhereTheyAreTold();

private:
    std::unique_ptr<FakeVisa> m_visa;
};

void TestExchange::init()
{
    m_visa = std::make_unique<FakeVisa>();
    QVERIFY(
        CDeviceVisa::instance()->connectDevice(QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET")));
    m_visa->clearCalls();
}

void TestExchange::cleanup()
{
    CDeviceVisa::instance()->disconnectDevice();
    m_visa.reset();
}

void TestExchange::exchangeHasFiveSeconds()
{
    m_visa->setReply("ASK?", " one ");
    QCOMPARE(scn::exchange(QStringLiteral("ASK?")), QStringLiteral("one"));
    const QStringList expected{QStringLiteral("viSetAttribute(100, 0x3FFF001A, 5000)"),
                               QStringLiteral("viWrite(100, \"ASK?\\n\")"),
                               QStringLiteral("viRead(100, 40959)")};
    QCOMPARE(m_visa->calls(), expected);
}

void TestExchange::resultTellsHowItEnded()
{
    m_visa->setReply("ASK?", "1");
    ExchangeResult result = ExchangeResult::Failed;
    QCOMPARE(scn::exchange(QStringLiteral("ASK?"), result), QStringLiteral("1"));
    QCOMPARE(result, ExchangeResult::Done);
    QCOMPARE(scn::exchange(QStringLiteral("SILENT?"), result), QString());
    QCOMPARE(result, ExchangeResult::TimedOut);
    QVERIFY(m_visa->calls().filter(QStringLiteral("0x3FFF001A, 5000")).size() == 2);
}

void TestExchange::severalEndWhereTheyAreTold()
{
    m_visa->setReply("A?", "1");
    m_visa->setReply("B?", "2");
    int exchanges = 0;
    const QVector<QString> replies =
        scn::exchangeAll({QStringLiteral("A?"), QStringLiteral("B?"), QStringLiteral("C?")},
                         [&exchanges](ExchangeResult) { return ++exchanges < 2; });
    QCOMPARE(replies, QVector<QString>({QStringLiteral("1"), QStringLiteral("2"), QString()}));
    QVERIFY(!m_visa->calls().contains(QStringLiteral("viWrite(100, \"C?\\n\")")));
    QCOMPARE(m_visa->calls().filter(QStringLiteral("0x3FFF001A, 5000")).size(), 2);
}

SCN_TEST(TestExchange, QCoreApplication)
#include "test_exchange.moc"
