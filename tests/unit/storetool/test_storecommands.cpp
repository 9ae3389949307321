#include "storerun.h"
#include "support/testprogram.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

/// The command line without a command's own arguments.
class TestStoreCommands : public QObject
{
    Q_OBJECT

private slots:
    void helpListsTheCommands_data();
    void helpListsTheCommands();
    void manualHasTheCommands();
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

/// Each begins a paragraph of its own.
void TestStoreCommands::manualHasTheCommands()
{
    if (QStandardPaths::findExecutable(QStringLiteral("man")).isEmpty()) {
        SCN_SKIP(QStringLiteral("the package man-db is not installed"));
    }
    QProcess man;
    man.start(QStringLiteral("man"), {QStringLiteral("-l"), QStringLiteral(SCN_MANUAL)});
    QVERIFY(man.waitForFinished());
    const QString manual = QString::fromUtf8(man.readAllStandardOutput());
    const QString help = QString::fromUtf8(runStore({QStringLiteral("--help")}).output);
    const QRegularExpression listed(QStringLiteral("^  ([a-z]+) "),
                                    QRegularExpression::MultilineOption);
    int commands = 0;
    for (auto each = listed.globalMatch(help); each.hasNext(); ++commands) {
        const QString command = each.next().captured(1);
        const QRegularExpression paragraph(
            QStringLiteral("\n(COMMANDS)?\n       %1 ").arg(command));
        QVERIFY2(manual.contains(paragraph), qPrintable(command));
    }
    QCOMPARE(commands, 6);
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
