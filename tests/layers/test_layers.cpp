#include "buildtree.h"
#include "layerrules.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// A source tree of two libraries, `low` and `high`, which keeps all rules until a file is changed.
class SmallTree
{
public:
    SmallTree()
    {
        write("src/CMakeLists.txt", "add_subdirectory(low)\nadd_subdirectory(high)\n");
        write("src/low/CMakeLists.txt",
              "# The lower.\nscn_library(low QT SOURCES low.cpp LINK Qt5::Core)\n");
        write("src/low/low.h", "#include <QString>\nclass Low;\n");
        write("src/low/low.cpp", "#include \"low/low.h\"\n");
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

    BuildTree read() const { return BuildTree(m_folder.path(), {QStringLiteral("src")}); }

private:
    QTemporaryDir m_folder;
};

QStringList breachesOf(const BuildTree& tree)
{
    return LayerRules::strayFiles(tree) + LayerRules::missingLinks(tree) +
           LayerRules::needlessLinks(tree) + LayerRules::upwardLinks(tree) +
           LayerRules::circles(tree);
}

/// Shows the breaches themselves, where comparing lists would show their number.
void expectNone(const QStringList& breaches)
{
    QVERIFY2(breaches.isEmpty(), qPrintable(breaches.join(QLatin1Char('\n'))));
}

} // namespace

/// The program's folders keep to their layers. Where a folder may include another, its CMake file
/// says so; nothing else keeps one from including all of them.
class TestLayers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void filesBelongToTargets();
    void targetsLinkWhatTheyInclude();
    void targetsIncludeWhatTheyLink();
    void linksGoDown();
    void foldersMakeNoCircle();
    void smallTreeKeepsTheRules();
    void breachIsSeen_data();
    void breachIsSeen();

private:
    const BuildTree m_tree{QStringLiteral(SCN_SOURCE_DIR),
                           {QStringLiteral("posix"), QStringLiteral("visa"), QStringLiteral("src"),
                            QStringLiteral("simulator"), QStringLiteral("launcher")}};
};

void TestLayers::initTestCase()
{
    // What reads nothing finds no breach.
    QVERIFY(m_tree.targets().size() >= 20);
    QVERIFY(m_tree.includes().size() >= 1000);
}

void TestLayers::filesBelongToTargets()
{
    expectNone(LayerRules::strayFiles(m_tree));
}

void TestLayers::targetsLinkWhatTheyInclude()
{
    expectNone(LayerRules::missingLinks(m_tree));
}

void TestLayers::targetsIncludeWhatTheyLink()
{
    expectNone(LayerRules::needlessLinks(m_tree));
}

void TestLayers::linksGoDown()
{
    expectNone(LayerRules::upwardLinks(m_tree));
}

void TestLayers::foldersMakeNoCircle()
{
    expectNone(LayerRules::circles(m_tree));
}

void TestLayers::smallTreeKeepsTheRules()
{
    QCOMPARE(breachesOf(SmallTree().read()), QStringList());
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
         QStringLiteral("src/high -> src/low -> src/high")});
    row("header of no target", "src/other/other.h", "",
        {QStringLiteral("src/other/other.h belongs to no library and no program")});
    row("source of no target", "src/low/other.cpp", "",
        {QStringLiteral("src/low/other.cpp belongs to no library and no program")});
    row("file that is missing", "src/low/low.cpp", "#include \"low/other.h\"\n",
        {QStringLiteral("src/low/low.cpp includes what is not there: low/other.h")});
    row("second library of a folder", "src/low/CMakeLists.txt",
        "scn_library(low SOURCES low.cpp LINK Qt5::Core)\nscn_library(more SOURCES more.cpp)\n",
        {QStringLiteral("src/low has two libraries, low and more")});
    row("link behind the reader's back", "src/low/CMakeLists.txt",
        "scn_library(low SOURCES low.cpp LINK Qt5::Core)\ntarget_link_libraries(low high)\n",
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
    QCOMPARE(breachesOf(tree.read()), breaches);
}

SCN_TEST(TestLayers, QCoreApplication)
#include "test_layers.moc"
