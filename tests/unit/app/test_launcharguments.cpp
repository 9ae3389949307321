#include "app/launcharguments.h"
#include "state/globals.h"
#include "support/testprogram.h"

#include <QTest>

class TestLaunchArguments : public QObject
{
    Q_OBJECT

private slots:
    void resourceIsTheFirstSection_data();
    void resourceIsTheFirstSection();
    void validationComparesWithTheResource_data();
    void validationComparesWithTheResource();
};

void TestLaunchArguments::resourceIsTheFirstSection_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("resource");
    const QString program = QStringLiteral("scn4070a");
    QTest::newRow("no argument") << QStringList{program} << QString();
    QTest::newRow("nothing at all") << QStringList() << QString();
    QTest::newRow("whole") << QStringList{program, QStringLiteral("ASRL3::INSTR")}
                           << QStringLiteral("ASRL3::INSTR");
    QTest::newRow("first of three")
        << QStringList{program, QStringLiteral("USB0::1::2::3::0::INSTR;extra;more")}
        << QStringLiteral("USB0::1::2::3::0::INSTR");
    QTest::newRow("further arguments are ignored")
        << QStringList{program, QStringLiteral("a"), QStringLiteral("b")} << QStringLiteral("a");
    QTest::newRow("empty section") << QStringList{program, QStringLiteral(";b")} << QString();
}

void TestLaunchArguments::resourceIsTheFirstSection()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, resource);
    QCOMPARE(resourceFromArguments(arguments), resource);
}

void TestLaunchArguments::validationComparesWithTheResource_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("valid");
    const QString program = QStringLiteral("scn4070a");
    QTest::newRow("none") << QStringList{program} << false;
    QTest::newRow("other") << QStringList{program, QStringLiteral("ASRL4::INSTR")} << false;
    QTest::newRow("same") << QStringList{program, QStringLiteral("ASRL3::INSTR")} << true;
    QTest::newRow("more behind the semicolon")
        << QStringList{program, QStringLiteral("ASRL3::INSTR;x")} << false;
}

void TestLaunchArguments::validationComparesWithTheResource()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, valid);
    g_resourceName = QStringLiteral("ASRL3::INSTR");
    if (!valid) {
        QTest::ignoreMessage(QtCriticalMsg, "错误：安全参数验证失败");
    }
    QCOMPARE(validateLaunchArguments(arguments), valid);
}

SCN_TEST(TestLaunchArguments, QCoreApplication)
#include "test_launcharguments.moc"
