#include "buildtree.h"
#include "layerrules.h"
#include "sourcetext.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// A source tree of two libraries, `low` and `high`, and a test, which keeps all rules until a file is changed.
class SmallTree
{
public:
    SmallTree()
    {
        write("CMakeLists.txt",
              "add_subdirectory(src)\nif(TESTS)\n    add_subdirectory(tests)\nendif()\n");
        write("tests/support/helper.h", "#include \"low/low.h\"\n");
        write("tests/unit/scene.h", "class Scene;\n");
        write("tests/unit/test_high.cpp",
              "#include \"scene.h\"\n#include \"high/high.h\"\n#include \"support/helper.h\"\n");
        write("src/CMakeLists.txt", "add_subdirectory(low)\nadd_subdirectory(high)\n");
        write("src/low/CMakeLists.txt",
              "# The lower.\nscn_library(low QT\n    SOURCES low.cpp base.cpp base_files.cpp "
              "LINK Qt5::Core)\n");
        write("src/low/base.h", "class Base;\n");
        write("src/low/base.cpp", "#include \"low/base.h\"\n");
        write("src/low/base_files.cpp", "#include \"low/base.h\"\n");
        write("src/low/low.h", "#include <QString>\nclass Low;\n");
        write("src/low/low.cpp", "#include \"low/low.h\"\n#include \"low/base.h\"\n");
        write("src/high/CMakeLists.txt",
              "scn_library(high QT\n    SOURCES high.cpp\n    LINK low Qt5::Widgets)\n");
        write("src/high/high.h", "#include <QWidget>\n#include <QString>\n");
        write("src/high/high.cpp", "#include \"high/high.h\"\n#include \"low/low.h\"\n");
    }

    void write(const char* name, const QByteArray& text)
    {
        const QString path = m_folder.filePath(QString::fromUtf8(name));
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QString path() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

/// The tests and the benchmarks are no libraries: their CMake files link by rules of their own.
QStringList linkedFolders(const QString& root)
{
    QStringList folders = topFolders(root);
    folders.removeAll(QStringLiteral("tests"));
    folders.removeAll(QStringLiteral("bench"));
    return folders;
}

QStringList breachesOf(const QString& root)
{
    const QStringList folders = topFolders(root);
    const IncludeTree all(root, folders);
    const IncludeTree linked(root, linkedFolders(root));
    const BuildTree build(linked);
    return layerrules::strayFiles(build) + layerrules::missingLinks(build) +
           layerrules::needlessLinks(build) + layerrules::upwardLinks(build) +
           layerrules::missingHeaders(all) + layerrules::upwardIncludes(all, folders) +
           layerrules::folderCircles(all) + layerrules::fileCircles(all);
}

/// Shows the breaches themselves, where comparing lists would show their number.
void expectNone(const QStringList& breaches)
{
    QVERIFY2(breaches.isEmpty(), qPrintable(breaches.join(QLatin1Char('\n'))));
}

} // namespace

/// The folders keep to their layers, in the order in which the CMake files add them. Which folder a library may
/// include its CMake file says; nothing else keeps it from including all of them.
class TestLayers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void filesBelongToTargets();
    void targetsLinkWhatTheyInclude();
    void targetsIncludeWhatTheyLink();
    void linksGoDown();
    void headersAreThere();
    void includesGoDown();
    void foldersMakeNoCircle();
    void filesMakeNoCircle();
    void smallTreeKeepsTheRules();
    void breachIsSeen_data();
    void breachIsSeen();

private:
    const QStringList m_folders = topFolders(QStringLiteral(SCN_SOURCE_DIR));
    const IncludeTree m_all{QStringLiteral(SCN_SOURCE_DIR), m_folders};
    const IncludeTree m_linked{QStringLiteral(SCN_SOURCE_DIR),
                               linkedFolders(QStringLiteral(SCN_SOURCE_DIR))};
    const BuildTree m_build{m_linked};
};

void TestLayers::initTestCase()
{
    // What reads nothing finds no breach.
    QVERIFY(m_folders.size() >= 7);
    QVERIFY(m_build.targets().size() >= 20);
    QVERIFY(m_linked.includes().size() >= 1000);
    QVERIFY(m_all.includes().size() >= 2000);
}

void TestLayers::filesBelongToTargets()
{
    expectNone(layerrules::strayFiles(m_build));
}

void TestLayers::targetsLinkWhatTheyInclude()
{
    expectNone(layerrules::missingLinks(m_build));
}

void TestLayers::targetsIncludeWhatTheyLink()
{
    expectNone(layerrules::needlessLinks(m_build));
}

void TestLayers::linksGoDown()
{
    expectNone(layerrules::upwardLinks(m_build));
}

void TestLayers::headersAreThere()
{
    expectNone(layerrules::missingHeaders(m_all));
}

void TestLayers::includesGoDown()
{
    expectNone(layerrules::upwardIncludes(m_all, m_folders));
}

void TestLayers::foldersMakeNoCircle()
{
    expectNone(layerrules::folderCircles(m_all));
}

void TestLayers::filesMakeNoCircle()
{
    expectNone(layerrules::fileCircles(m_all));
}

void TestLayers::smallTreeKeepsTheRules()
{
    expectNone(breachesOf(SmallTree().path()));
}

void TestLayers::breachIsSeen_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("breaches");

    const auto row = [](const char* name, const char* file, const char* text,
                        const QStringList& breaches) {
        QTest::newRow(name) << QByteArray(file) << QByteArray(text) << breaches;
    };
    row("folder not linked", "src/high/CMakeLists.txt",
        "scn_library(high SOURCES high.cpp LINK Qt5::Widgets)",
        {QStringLiteral("high does not link low, which src/high/high.cpp includes")});
    row("library not linked", "src/low/low.cpp", "#include \"low/low.h\"\n#  include <QSqlQuery>\n",
        {QStringLiteral("low does not link Qt5::Sql, which src/low/low.cpp includes"),
         QStringLiteral("low links Qt5::Core, which none of its files needs")});
    row("thread not linked", "src/low/low.cpp", "#include <thread>\n",
        {QStringLiteral("low does not link Threads::Threads, which src/low/low.cpp includes")});
    row("folder not included", "src/high/high.cpp", "#include \"high/high.h\"\n",
        {QStringLiteral("high links low, which none of its files needs")});
    row("library not included", "src/high/high.h", "#include <QString>\n",
        {QStringLiteral("high does not link Qt5::Core, which src/high/high.h includes"),
         QStringLiteral("high links Qt5::Widgets, which none of its files needs")});
    row("library brought along", "src/high/CMakeLists.txt",
        "scn_library(high SOURCES high.cpp LINK low Qt5::Core Qt5::Widgets)",
        {QStringLiteral("high links Qt5::Core, which none of its files needs")});
    row("link upwards", "src/CMakeLists.txt", "add_subdirectory(high)\nadd_subdirectory(low)\n",
        {QStringLiteral("high links upwards to low")});
    row("circle", "src/low/low.h", "#include <QString>\n#include \"high/high.h\"\n",
        {QStringLiteral("low does not link high, which src/low/low.h includes"),
         QStringLiteral("src/high -> src/low -> src/high"),
         QStringLiteral("src/high/high -> src/low/low -> src/high/high")});
    row("circle of two files", "src/low/base.cpp",
        "#include \"low/base.h\"\n#include \"low/low.h\"\n",
        {QStringLiteral("src/low/low -> src/low/base -> src/low/low")});
    row("circle through a part", "src/low/base_files.cpp", "#include \"low/low.h\"\n",
        {QStringLiteral("src/low/low -> src/low/base -> src/low/low")});
    row("circle of the tests", "tests/support/helper.h", "#include \"scene.h\"\n",
        {QStringLiteral("tests/support -> tests/unit -> tests/support")});
    row("program that needs a test", "src/high/high.cpp",
        "#include \"high/high.h\"\n#include \"low/low.h\"\n#include \"scene.h\"\n",
        {QStringLiteral("src/high/high.cpp includes upwards tests/unit/scene.h"),
         QStringLiteral("src/high -> tests/unit -> src/high")});
    row("header that a test misses", "tests/unit/test_high.cpp", "#include \"support/gone.h\"\n",
        {QStringLiteral("tests/unit/test_high.cpp includes what is not there: support/gone.h")});
    row("order of the top folders", "CMakeLists.txt",
        "add_subdirectory(tests)\nadd_subdirectory(src)\n",
        {QStringLiteral("tests/support/helper.h includes upwards src/low/low.h"),
         QStringLiteral("tests/unit/test_high.cpp includes upwards src/high/high.h")});
    row("header of no target", "src/other/other.h", "",
        {QStringLiteral("src/other/other.h belongs to no library and no program")});
    row("source of no target", "src/low/other.cpp", "",
        {QStringLiteral("src/low/other.cpp belongs to no library and no program")});
    row("file that is missing", "src/low/low.cpp", "#include \"low/other.h\"\n",
        {QStringLiteral("src/low/low.cpp includes what is not there: low/other.h")});
    row("second library of a folder", "src/low/CMakeLists.txt",
        "scn_library(low SOURCES low.cpp base.cpp base_files.cpp LINK Qt5::Core)\nscn_library(more "
        "SOURCES more.cpp)\n",
        {QStringLiteral("src/low has two libraries, low and more")});
    row("link behind the reader's back", "src/low/CMakeLists.txt",
        "scn_library(low SOURCES low.cpp base.cpp base_files.cpp LINK "
        "Qt5::Core)\ntarget_link_libraries(low high)\n",
        {QStringLiteral("src/low/CMakeLists.txt calls target_link_libraries: only scn_library and "
                        "scn_program are followed")});
}

void TestLayers::breachIsSeen()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, text);
    QFETCH(QStringList, breaches);

    SmallTree tree;
    tree.write(file.constData(), text);
    QCOMPARE(breachesOf(tree.path()), breaches);
}

SCN_TEST(TestLayers, QCoreApplication)
#include "test_layers.moc"
