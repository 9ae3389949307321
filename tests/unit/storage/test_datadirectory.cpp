#include "storage/datadirectory.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString below(const QString& name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

bool writeFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("x") == 1;
}

const QString kName = QStringLiteral("SN_test_datadirectory_Data");

} // namespace

class TestDataDirectory : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void nameFromIdentity_data();
    void nameFromIdentity();
    void longSerialIsCut_data();
    void longSerialIsCut();
    void removesAStoreWithAllItHolds();
    void removingWhatIsNotThereIsDone();
    void refusesNamesThatAreNoPlainName_data();
    void refusesNamesThatAreNoPlainName();
    void leavesALinkAlone();
    void leavesAFileAlone();
    void removesLinksInsideButNotTheirTargets();
};

void TestDataDirectory::cleanup()
{
    QFile::remove(below(kName));
    QDir(below(kName)).removeRecursively();
}

void TestDataDirectory::nameFromIdentity_data()
{
    QTest::addColumn<QString>("identity");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* identity, const char* name) {
        QTest::newRow(identity) << QString::fromUtf8(identity) << QString::fromUtf8(name);
    };
    row("Maker SCN4070A SN123456 1.0.0", "SN123456_Data");
    row("Maker SCN4070A SN123456", "SN123456_Data");
    row("Maker SCN4070A", "_Data");
    row("", "_Data");
    row("Maker  SN123456 1.0", "SN123456_Data");
    row("Maker SCN4070A ../../etc 1.0", ".._.._etc_Data");
    row("Maker SCN4070A ..\\up 1.0", ".._up_Data");
    row("Maker SCN4070A / 1.0", "__Data");
    row("Maker SCN4070A .. 1.0", ".._Data");
    row("Maker SCN4070A %1%2 1.0", "%1%2_Data");
}

void TestDataDirectory::nameFromIdentity()
{
    QFETCH(QString, identity);
    QFETCH(QString, name);
    QCOMPARE(dataDirectoryName(identity), name);
}

void TestDataDirectory::longSerialIsCut_data()
{
    QTest::addColumn<QString>("letter");
    QTest::addColumn<int>("longest");
    QTest::newRow("one byte") << QStringLiteral("x") << 250;
    QTest::newRow("two bytes") << QStringLiteral("Ω") << 125;
    QTest::newRow("three bytes") << QStringLiteral("数") << 83;
    QTest::newRow("four bytes") << QStringLiteral("\U0001F4C8") << 62;
}

void TestDataDirectory::longSerialIsCut()
{
    QFETCH(QString, letter);
    QFETCH(int, longest);
    const auto nameOf = [](const QString& serial) {
        return dataDirectoryName(QStringLiteral("Maker SCN4070A %1 1.0").arg(serial));
    };
    QCOMPARE(nameOf(letter.repeated(longest)), letter.repeated(longest) + QStringLiteral("_Data"));
    const QString name = nameOf(letter.repeated(longest + 1));
    QVERIFY2(QRegularExpression(QStringLiteral("^(%1)+-[0-9a-f]{8}_Data$").arg(letter))
                 .match(name)
                 .hasMatch(),
             qPrintable(name));
    const int bytes = name.toUtf8().size();
    QVERIFY2(bytes <= 255 && bytes > 255 - letter.toUtf8().size(),
             qPrintable(QString::number(bytes)));
    QCOMPARE(nameOf(letter.repeated(longest + 1)), name);
    // What differs beyond the cut differs in the hash.
    QVERIFY(nameOf(letter.repeated(longest + 1) + QStringLiteral("1")) != name);
    const QTemporaryDir directory;
    QVERIFY(QDir(directory.path()).mkdir(name));
}

void TestDataDirectory::removesAStoreWithAllItHolds()
{
    QVERIFY(QDir().mkpath(below(kName) + QStringLiteral("/inner")));
    QVERIFY(writeFile(below(kName) + QStringLiteral("/20260112.db")));
    QVERIFY(writeFile(below(kName) + QStringLiteral("/inner/x")));
    QVERIFY(removeDataDirectory(kName));
    QVERIFY(!QFileInfo::exists(below(kName)));
}

void TestDataDirectory::removingWhatIsNotThereIsDone()
{
    QVERIFY(removeDataDirectory(kName));
}

void TestDataDirectory::refusesNamesThatAreNoPlainName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("here") << QStringLiteral(".");
    QTest::newRow("up") << QStringLiteral("..");
    QTest::newRow("path") << kName + QStringLiteral("/inner");
    QTest::newRow("up and down") << QStringLiteral("../") + kName;
    QTest::newRow("backslash") << kName + QStringLiteral("\\inner");
    QTest::newRow("absolute") << below(kName);
}

void TestDataDirectory::refusesNamesThatAreNoPlainName()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkpath(below(kName) + QStringLiteral("/inner")));
    QVERIFY(!removeDataDirectory(name));
    QVERIFY(QFileInfo::exists(below(kName) + QStringLiteral("/inner")));
}

void TestDataDirectory::leavesALinkAlone()
{
    const QTemporaryDir elsewhere;
    const QString kept = elsewhere.filePath(QStringLiteral("kept"));
    QVERIFY(writeFile(kept));
    QVERIFY(QFile::link(elsewhere.path(), below(kName)));
    QVERIFY(!removeDataDirectory(kName));
    QVERIFY(QFileInfo::exists(kept));
    QVERIFY(QFileInfo(below(kName)).isSymLink());
}

void TestDataDirectory::leavesAFileAlone()
{
    QVERIFY(writeFile(below(kName)));
    QVERIFY(!removeDataDirectory(kName));
    QVERIFY(QFileInfo::exists(below(kName)));
}

void TestDataDirectory::removesLinksInsideButNotTheirTargets()
{
    const QTemporaryDir elsewhere;
    const QString kept = elsewhere.filePath(QStringLiteral("kept"));
    QVERIFY(writeFile(kept));
    QVERIFY(QDir().mkpath(below(kName)));
    QVERIFY(QFile::link(elsewhere.path(), below(kName) + QStringLiteral("/link")));
    QVERIFY(removeDataDirectory(kName));
    QVERIFY(QFileInfo::exists(kept));
}

SCN_TEST(TestDataDirectory, QCoreApplication)
#include "test_datadirectory.moc"
