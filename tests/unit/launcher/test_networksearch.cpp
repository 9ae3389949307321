#include "launcher/networksearch.h"
#include "support/testprogram.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace scnlauncher;

namespace {

constexpr int kWaitMs = 20000;

QStringList resourcesOf(const FoundInstruments& instruments)
{
    QStringList resources;
    for (const FoundInstrument& instrument : instruments) {
        resources.append(instrument.resource);
    }
    return resources;
}

/// A tool that answers as avahi-browse does.
QString makeTool(const QTemporaryDir& directory, const QByteArray& script)
{
    QFile file(directory.filePath(QStringLiteral("tool")));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("#!/bin/sh\n" + script);
    }
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return file.fileName();
}

} // namespace

/// Instruments that announce themselves on the network.
class TestNetworkSearch : public QObject
{
    Q_OBJECT

private slots:
    void linesGiveInstruments_data();
    void linesGiveInstruments();
    void nameIsPlain();
    void bothServicesAreAskedFor();
    void missingDiscoveryIsReported_data();
    void missingDiscoveryIsReported();
    void silentDiscoveryIsReported();
};

void TestNetworkSearch::linesGiveInstruments_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QStringList>("resources");
    const QByteArray raw = "=;eth0;IPv4;A;_scpi-raw._tcp;local;a.local;192.0.2.5;5030;\"t=1\"\n";
    const QStringList one{QStringLiteral("TCPIP0::192.0.2.5::5030::SOCKET")};
    QTest::newRow("raw") << raw << one;
    QTest::newRow("unresolved") << QByteArray("+;eth0;IPv4;A;_scpi-raw._tcp;local\n")
                                << QStringList();
    QTest::newRow("IPv6") << QByteArray(raw).replace("IPv4", "IPv6") << QStringList();
    QTest::newRow("heard twice") << raw + QByteArray(raw).replace("eth0", "eth1") << one;
    QTest::newRow("web page of an LXI instrument")
        << QByteArray("=;eth0;IPv4;A;_lxi._tcp;local;a.local;192.0.2.5;80;\n")
        << QStringList{QStringLiteral("TCPIP0::192.0.2.5::5025::SOCKET")};
    QTest::newRow("garbage") << QByteArray("=;;\n\n;;;;;;;;;;\n") << QStringList();
}

void TestNetworkSearch::linesGiveInstruments()
{
    QFETCH(QByteArray, output);
    QFETCH(QStringList, resources);
    QCOMPARE(resourcesOf(NetworkSearch::instrumentsIn(output)), resources);
}

void TestNetworkSearch::nameIsPlain()
{
    const FoundInstruments found = NetworkSearch::instrumentsIn(
        "=;e;IPv4;Lab\\0321\\.2 \\228\\187\\170;_scpi-raw._tcp;local;h;192.0.2.5;5025;\n");
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.at(0).name, QStringLiteral("Lab 1.2 仪"));
}

void TestNetworkSearch::bothServicesAreAskedFor()
{
    const QTemporaryDir directory;
    const QString tool =
        makeTool(directory, "case $2 in\n"
                            "_scpi-raw._tcp) echo '=;e;IPv4;A;_scpi-raw._tcp;l;h;192.0.2.1;1;';;\n"
                            "_lxi._tcp) echo '=;e;IPv4;B;_lxi._tcp;l;h;192.0.2.2;80;';;\n"
                            "esac\n");
    NetworkSearch search(nullptr, tool);
    QSignalSpy found(&search, &NetworkSearch::found);
    search.start();
    QVERIFY(found.wait(kWaitMs));
    QCOMPARE(resourcesOf(found.at(0).at(0).value<FoundInstruments>()),
             (QStringList{QStringLiteral("TCPIP0::192.0.2.1::1::SOCKET"),
                          QStringLiteral("TCPIP0::192.0.2.2::5025::SOCKET")}));
}

void TestNetworkSearch::missingDiscoveryIsReported_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("no tool") << QByteArray();
    QTest::newRow("no daemon") << QByteArray("echo Daemon not running >&2\nexit 1\n");
}

void TestNetworkSearch::missingDiscoveryIsReported()
{
    QFETCH(QByteArray, script);
    const QTemporaryDir directory;
    NetworkSearch search(nullptr, script.isEmpty() ? QStringLiteral("/no/such/tool")
                                                   : makeTool(directory, script));
    QSignalSpy unavailable(&search, &NetworkSearch::unavailable);
    search.start();
    QTRY_COMPARE_WITH_TIMEOUT(unavailable.count(), 1, kWaitMs);
}

void TestNetworkSearch::silentDiscoveryIsReported()
{
    const QTemporaryDir directory;
    NetworkSearch search(nullptr, makeTool(directory, "exec sleep 1000\n"),
                         std::chrono::milliseconds(200));
    const QSignalSpy unavailable(&search, &NetworkSearch::unavailable);
    search.start();
    QTRY_COMPARE_WITH_TIMEOUT(unavailable.size(), 1, kWaitMs);
    // It can be asked again.
    search.start();
    QTRY_COMPARE_WITH_TIMEOUT(unavailable.size(), 2, kWaitMs);
}

SCN_TEST(TestNetworkSearch, QCoreApplication)
#include "test_networksearch.moc"
