#include "storerun.h"
#include "support/testprogram.h"

#include <QTest>

/// The command line without a command's own arguments.
class TestStoreCommands : public QObject
{
    Q_OBJECT

private slots:
    void helpListsTheCommands_data();
    void helpListsTheCommands();
    void versionIsThatOfTheProject();
    void wrongCommandIsASentence_data();
    void wrongCommandIsASentence();
};

void TestStoreCommands::helpListsTheCommands_data()
{
    QTest::addColumn<QString>("argument");

    QTest::newRow("long") << QStringLiteral("--help");
    QTest::newRow("short") << QStringLiteral("-h");
    QTest::newRow("word") << QStringLiteral("help");
}

void TestStoreCommands::helpListsTheCommands()
{
    QFETCH(QString, argument);

    const StoreRun run = runStore({argument});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.startsWith("Usage: scn4070a-store COMMAND"));
    QVERIFY(run.output.contains("\n  --version"));
    QCOMPARE(run.errors, QByteArray());
}

void TestStoreCommands::versionIsThatOfTheProject()
{
    const StoreRun run = runStore({QStringLiteral("--version")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output, QByteArray("scn4070a-store " SCN_VERSION "\n"));
}

void TestStoreCommands::wrongCommandIsASentence_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("sentence");

    QTest::newRow("none") << QStringList()
                          << QByteArray("scn4070a-store: no command is given. See "
                                        "'scn4070a-store --help'.\n");
    QTest::newRow("unknown") << QStringList{QStringLiteral("lsit")}
                             << QByteArray("scn4070a-store: there is no command 'lsit'. See "
                                           "'scn4070a-store --help'.\n");
}

void TestStoreCommands::wrongCommandIsASentence()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, sentence);

    const StoreRun run = runStore(arguments);
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.errors, sentence);
}

SCN_TEST(TestStoreCommands, QCoreApplication)
#include "test_storecommands.moc"
