#include "support/testprogram.h"

#include <QProcess>
#include <QTest>

/// What bash offers for the last word of a command line.
class TestStoreCompletion : public QObject
{
    Q_OBJECT

private slots:
    void bashOffers_data();
    void bashOffers();
};

void TestStoreCompletion::bashOffers_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("offers");

    const auto row = [](const char* words, const char* offers) {
        QTest::newRow(words) << QString::fromLatin1(words) << QString::fromLatin1(offers);
    };
    row("li", "list");
    row("--v", "--version");
    row("export --se", "--separator --serial");
    row("export run --o", "--output");
    row("check run --", "--json --gap --help");
    row("info ru", "");
    row("nonsense --", "");
}

void TestStoreCompletion::bashOffers()
{
    QFETCH(QString, words);
    QFETCH(QString, offers);

    QProcess bash;
    bash.start(
        QStringLiteral("bash"),
        {QStringLiteral("-c"),
         QStringLiteral(". '%1'; COMP_WORDS=('%2' %3); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
                        "_scn4070a_store; echo \"${COMPREPLY[*]}\"")
             .arg(QStringLiteral(SCN_COMPLETION), QStringLiteral(SCN_STORE), words)});
    QVERIFY(bash.waitForFinished());
    QCOMPARE(QString::fromUtf8(bash.readAllStandardError()), QString());
    QCOMPARE(QString::fromUtf8(bash.readAllStandardOutput()).trimmed(), offers);
}

SCN_TEST(TestStoreCompletion, QCoreApplication)
#include "test_storecompletion.moc"
