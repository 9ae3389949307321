#include "options.h"
#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

using namespace scnsim;

class TestSimOptions : public QObject
{
    Q_OBJECT

private slots:
    void nothingMeansTheUsualPort();
    void allOptionsAreRead();
    void valueMayFollowAnEqualsSign();
    void lastOfTwoCounts();
    void badOptionIsRefused_data();
    void badOptionIsRefused();
};

void TestSimOptions::nothingMeansTheUsualPort()
{
    SimulatorOptions options;
    std::string error;
    QVERIFY(parseOptions({}, options, error));
    QCOMPARE(int{*options.tcpPort}, 5025);
    QVERIFY(options.terminalLink.empty());
    QCOMPARE(options.modules, (std::map<int, int>{{1, 1}, {2, 2}, {3, 8}}));
    QVERIFY(!options.readingsPerSecond);
    QVERIFY(!options.controlPort);
    QVERIFY(options.faults.empty());

    SimulatorOptions onTerminal;
    QVERIFY(parseOptions({"--pty", "/tmp/x"}, onTerminal, error));
    QVERIFY(!onTerminal.tcpPort);
}

void TestSimOptions::allOptionsAreRead()
{
    SimulatorOptions options;
    std::string error;
    QVERIFY(parseOptions({"--tcp",        "0",
                          "--pty",        "/tmp/x",
                          "--slots",      "2:14,15:0",
                          "--idn",        "A,B,C,D",
                          "--rate",       "0.5",
                          "--baud",       "57600",
                          "--seed",       "18446744073709551615",
                          "--open",       "201,1503",
                          "--transcript", "t.log",
                          "--control",    "0",
                          "--fault",      "silence for R? * times 2",
                          "--fault",      "refuse",
                          "--help"},
                         options, error));
    QCOMPARE(int{*options.tcpPort}, 0);
    QCOMPARE(shown(options.terminalLink), QStringLiteral("/tmp/x"));
    QCOMPARE(options.modules, (std::map<int, int>{{2, 14}, {15, 0}}));
    QCOMPARE(shown(options.identity), QStringLiteral("A,B,C,D"));
    QCOMPARE(*options.readingsPerSecond, 0.5);
    QCOMPARE(options.baud, 57600);
    QCOMPARE(options.seed, UINT64_MAX);
    QCOMPARE(options.openChannels, (std::set<int>{201, 1503}));
    QCOMPARE(shown(options.transcriptPath), QStringLiteral("t.log"));
    QCOMPARE(int{*options.controlPort}, 0);
    QCOMPARE(options.faults.size(), std::size_t{2});
    QCOMPARE(shown(faultText(options.faults[0])), QStringLiteral("silence for R? * times 2"));
    QCOMPARE(shown(faultText(options.faults[1])), QStringLiteral("refuse"));
    QVERIFY(options.help);

    SimulatorOptions empty;
    QVERIFY(parseOptions({"--slots", ""}, empty, error));
    QVERIFY(empty.modules.empty());
}

void TestSimOptions::valueMayFollowAnEqualsSign()
{
    SimulatorOptions options;
    std::string error;
    QVERIFY(parseOptions({"--seed=7", "--idn=A,B,C,D"}, options, error));
    QCOMPARE(options.seed, std::uint64_t{7});
    QCOMPARE(shown(options.identity), QStringLiteral("A,B,C,D"));

    QVERIFY(!parseOptions({"--seed=7", "--tcp="}, options, error));
    QCOMPARE(shown(error), QStringLiteral("--tcp wants a port from 0 to 65535"));
}

void TestSimOptions::lastOfTwoCounts()
{
    SimulatorOptions options;
    std::string error;
    QVERIFY(parseOptions({"--rate", "5", "--slots", "1:1", "--rate", "7", "--slots", "2:8"},
                         options, error));
    QCOMPARE(*options.readingsPerSecond, 7.0);
    QCOMPARE(options.modules, (std::map<int, int>{{2, 8}}));
}

void TestSimOptions::badOptionIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char* arguments) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments).split(QLatin1Char(' '));
    };
    row("5025");
    row("--port 1");
    row("--tcp");
    row("--tcp x");
    row("--tcp 65536");
    row("--tcp -1");
    row("--tcp 12x");
    row("--slots 1");
    row("--slots 1:");
    row("--slots 0:1");
    row("--slots 100:1");
    row("--slots 1:1000");
    row("--slots 1:-1");
    row("--slots 1:1,1:2");
    row("--slots 1:1,");
    row("--idn A,B,C");
    row("--idn A,B,C,D,E");
    row("--idn A,B,,D");
    row("--rate 0");
    row("--rate fast");
    row("--rate nan");
    row("--rate inf");
    row("--baud 0");
    row("--baud 9600.5");
    row("--seed -1");
    row("--seed 1.5");
    row("--open 1");
    row("--open 101,");
    row("--transcript");
    row("--control");
    row("--control 65536");
    row("--fault");
    row("--fault noise");

    QTest::newRow("blank in the identity")
        << QStringList{QStringLiteral("--idn"), QStringLiteral("A,B C,D,E")};
    QTest::newRow("no path of a link") << QStringList{QStringLiteral("--pty"), QString()};
}

void TestSimOptions::badOptionIsRefused()
{
    QFETCH(QStringList, arguments);
    std::vector<std::string> texts;
    for (const QString& argument : arguments) {
        texts.push_back(argument.toStdString());
    }
    SimulatorOptions options;
    std::string error;
    QVERIFY(!parseOptions(texts, options, error));
    QVERIFY2(shown(error).contains(arguments.first()), error.c_str());
}

SCN_TEST(TestSimOptions, testprogram::NoApplication)
#include "test_simoptions.moc"
