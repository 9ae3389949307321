#include "storage/datadirectory.h"

#include <QDir>
#include <QFile>
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

QTEST_GUILESS_MAIN(TestDataDirectory)
#include "test_datadirectory.moc"
