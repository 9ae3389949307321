#include "launcher/launcheroptions.h"
#include "support/testprogram.h"
#include "support/texts.h"

#include <QtTest>

#include <initializer_list>

using namespace scnlauncher;

namespace {

/// The options behind programs that are there.
LauncherOptions parsed(const QStringList& more)
{
    return LauncherOptions::parse(
        texts({"launcher", "--program", "/bin/true", "--simulator", "/bin/true"}) + more);
}

LauncherOptions parsedAlone(const QStringList& more)
{
    return LauncherOptions::parse(texts({"launcher", "--program", "/bin/true"}) + more);
}

} // namespace

/// The launcher's command line.
class TestLauncherOptions : public QObject
{
    Q_OBJECT

private slots:
    void nothingOpensTheStartPage();
    void simulatorsOptionsOpenIt_data();
    void simulatorsOptionsOpenIt();
    void resourceIsOpened();
    void wrongOptionIsTold();
    void contradictionIsTold_data();
    void contradictionIsTold();
    void helpHasNoOtherForm();
    void missingProgramIsTold();
    void helpAndVersionNeedNoProgram();
    void helpNamesTheSerialRate();
    void commandLineIsEnglish();
};

void TestLauncherOptions::nothingOpensTheStartPage()
{
    const LauncherOptions options = parsedAlone({});
    QCOMPARE(options.errorText, QString());
    QVERIFY(!options.isSimulated);
    QVERIFY(options.resource.isEmpty());
}

void TestLauncherOptions::simulatorsOptionsOpenIt_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("passedOn");
    QTest::newRow("plain") << texts({"--simulated"}) << texts({"--tcp", "0"});
    QTest::newRow("modules") << texts({"--slots", "1:13"})
                             << texts({"--tcp", "0", "--slots", "1:13"});
    QTest::newRow("all") << texts({"--rate", "40", "--transcript", "t", "--slots", "1:13"})
                         << texts({"--tcp", "0", "--transcript", "t", "--slots", "1:13", "--rate",
                                   "40"});
}

void TestLauncherOptions::simulatorsOptionsOpenIt()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, passedOn);
    const LauncherOptions options = parsed(arguments);
    QVERIFY(options.isSimulated);
    QCOMPARE(options.simulatorArguments, passedOn);
}

void TestLauncherOptions::resourceIsOpened()
{
    const LauncherOptions options = parsed(texts({"ASRL/dev/ttyS0::INSTR"}));
    QCOMPARE(options.errorText, QString());
    QVERIFY(!options.isSimulated);
    QCOMPARE(options.resource, QStringLiteral("ASRL/dev/ttyS0::INSTR"));
}

void TestLauncherOptions::wrongOptionIsTold()
{
    const QString text = parsed(texts({"--nonsense"})).errorText;
    QVERIFY2(text.contains(QLatin1String("nonsense")), qPrintable(text));
}

void TestLauncherOptions::contradictionIsTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    QTest::newRow("two resources") << texts({"A", "B"}) << QStringLiteral("A B");
    QTest::newRow("simulated resource")
        << texts({"--simulated", "A"}) << QStringLiteral("--simulated");
    QTest::newRow("modules of a resource")
        << texts({"A", "--slots", "1:13"}) << QStringLiteral("--slots");
}

void TestLauncherOptions::contradictionIsTold()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const QString text = parsed(arguments).errorText;
    QVERIFY2(text.contains(named), qPrintable(text));
    // Who asks for help gets it.
    QCOMPARE(parsed(arguments + texts({"--help"})).errorText, QString());
}

void TestLauncherOptions::helpHasNoOtherForm()
{
    QVERIFY(parsed(texts({"-h"})).asksForHelp);
    const QString text = parsed(texts({"--help-all"})).errorText;
    QVERIFY2(text.contains(QLatin1String("help-all")), qPrintable(text));
}

void TestLauncherOptions::missingProgramIsTold()
{
    QCOMPARE(LauncherOptions::parse(texts({"launcher", "--program", "/no/such"})).errorText,
             QStringLiteral("the program did not start: /no/such does not exist"));
    QCOMPARE(parsedAlone(texts({"--simulator", "/etc/passwd"})).errorText,
             QStringLiteral("the simulator did not start: /etc/passwd cannot be run"));
}

void TestLauncherOptions::helpAndVersionNeedNoProgram()
{
    const LauncherOptions help =
        LauncherOptions::parse(texts({"launcher", "--program", "/no/such", "--help"}));
    QCOMPARE(help.errorText, QString());
    QVERIFY(help.asksForHelp);
    QVERIFY(help.helpText.contains(QLatin1String("--simulated")));
    QVERIFY(LauncherOptions::parse(texts({"launcher", "--version"})).asksForVersion);
}

void TestLauncherOptions::commandLineIsEnglish()
{
    QStringList lines{parsed(texts({"--help"})).helpText};
    const QList<QStringList> wrong = {
        texts({"launcher", "--nonsense"}),
        texts({"launcher", "--rate"}),
        texts({"launcher", "--program", "/no/such"}),
        texts({"launcher", "--program", "/"}),
        texts({"launcher", "--program", "/bin/true", "--simulator", "/no/such"}),
        texts({"launcher", "--program", "/bin/true", "a", "b"}),
        texts({"launcher", "--program", "/bin/true", "--simulated", "a"})};
    for (const QStringList& arguments : wrong) {
        lines.append(LauncherOptions::parse(arguments).errorText);
        QVERIFY(!lines.last().isEmpty());
    }
    for (const QString& line : qAsConst(lines)) {
        QCOMPARE(QString::fromLatin1(line.toLatin1()), line);
    }
}

void TestLauncherOptions::helpNamesTheSerialRate()
{
    const QString help = parsed(texts({"--help"})).helpText;
    QVERIFY2(help.contains(QLatin1String("SCN4070A_SERIAL_RATE")), qPrintable(help));
}

SCN_TEST(TestLauncherOptions, QCoreApplication)
#include "test_launcheroptions.moc"
