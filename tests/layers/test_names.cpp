#include "declarednames.h"
#include "includetree.h"
#include "sourcetext.h"
#include "support/testprogram.h"

#include <QMap>
#include <QRegularExpression>
#include <QTest>

namespace {

const QString kRoot = QStringLiteral(SCN_SOURCE_DIR);

/// The tests' own types may share names: each folder of tests is a program.
IncludeTree programTree()
{
    QStringList folders = topFolders(kRoot);
    folders.removeAll(QStringLiteral("tests"));
    folders.removeAll(QStringLiteral("bench"));
    return IncludeTree(kRoot, folders);
}

/// The names between backticks in one section of a page.
QStringList listedNames(const QString& page, const QString& title)
{
    static const QRegularExpression name(QStringLiteral("`(\\w+)`"));
    const QString text = textOf(kRoot + QStringLiteral("/docs/") + page);
    const QString section = text.section(QStringLiteral("\n## ") + title + QLatin1Char('\n'), 1, 1)
                                .section(QStringLiteral("\n## "), 0, 0);
    QStringList names;
    QRegularExpressionMatchIterator matches = name.globalMatch(section);
    while (matches.hasNext()) {
        names.append(matches.next().captured(1));
    }
    return names;
}

QString listed(const QVector<DeclaredName>& names)
{
    QStringList texts;
    for (const DeclaredName& name : names) {
        texts.append(name.scope.isEmpty() ? name.name
                                          : name.scope + QLatin1String("::") + name.name);
    }
    return texts.join(QLatin1Char(' '));
}

} // namespace

/// Types have names of their own, and those that other code does not know are in a namespace.
class TestNames : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void noTwoTypesShareAName();
    void typesOutsideNamespacesAreListed();
    void namesAreRead_data();
    void namesAreRead();

private:
    /// The files of each name that the program's headers and sources declare.
    QMap<QString, QStringList> m_files;
    QStringList m_global;
};

void TestNames::initTestCase()
{
    const IncludeTree tree = programTree();
    for (const QString& file : tree.files()) {
        for (const DeclaredName& name : declaredNames(textOf(kRoot + QLatin1Char('/') + file))) {
            m_files[name.name].append(file);
            if (name.scope.isEmpty()) {
                m_global.append(name.name);
            }
        }
    }
    // A check that read no files would pass.
    QVERIFY(m_files.size() >= 200);
    QVERIFY(m_files.contains(QStringLiteral("ChannelNumber")));
    QVERIFY(m_files.contains(QStringLiteral("ScaleMoreColumn")));
}

void TestNames::noTwoTypesShareAName()
{
    QStringList breaches;
    for (auto name = m_files.cbegin(); name != m_files.cend(); ++name) {
        if (name->size() > 1) {
            breaches.append(name.key() + QStringLiteral(" is declared in ") +
                            name->join(QStringLiteral(" and ")));
        }
    }
    QVERIFY2(breaches.isEmpty(), qPrintable(breaches.join(QLatin1Char('\n'))));
}

void TestNames::typesOutsideNamespacesAreListed()
{
    const QStringList known =
        listedNames(QStringLiteral("howto.md"), QStringLiteral("Types outside namespaces"));
    for (const QString& name : qAsConst(m_global)) {
        QVERIFY2(known.contains(name), qPrintable(name + QStringLiteral(" is in no namespace")));
    }
    for (const QString& name : known) {
        QVERIFY2(m_global.contains(name), qPrintable(name + QStringLiteral(" is not there")));
    }
}

void TestNames::namesAreRead_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("names");

    const auto row = [](const char* source, const char* names) {
        QTest::newRow(source) << QString::fromUtf8(source) << QString::fromUtf8(names);
    };
    row("class A { class B {}; void f() { struct C {}; } };", "A");
    row("namespace scn::visa { struct A : public B<int> {}; }", "scn::visa::A");
    row("namespace scn { namespace { class A {}; } struct B {}; } class C {};", "scn::B C");
    row("template <typename T> class A final {};", "A");
    row("class A; struct B; enum class C : int;", "");
    row("struct A::B { int c; };", "");
    row("enum class A { B, C };", "A");
    row("enum A { B, C = 2, };", "A B C");
    row("enum { B = 1 << 2 };", "B");
    row("enum : int { B };", "B");
    row("enum A : int { B }; enum class C : int { D };", "A B C");
    row("class A { enum B { C }; };", "A");
    row("using A = int; namespace scn { using std::size_t; using namespace std; }", "A");
    row("constexpr A kRows[] = {{1, 2}, {3, 4}}; struct B {};", "B");
    row("void f(struct A* a) { if (a) {} } class B {};", "B");
    row("Q_DECLARE_METATYPE(A)\nclass B {};", "B");
    row("// class A {};\n/* class B {}; */\n#define C \\\n class D {\nclass E {};", "E");
    row("const char* a = \"class A {\"; char b = '{'; int c = 1'000; class D {};", "D");
    row("auto a = R\"(class A {)\"; class B {};", "B");
}

void TestNames::namesAreRead()
{
    QFETCH(QString, source);
    QFETCH(QString, names);

    QCOMPARE(listed(declaredNames(source)), names);
}

SCN_TEST(TestNames, QCoreApplication)
#include "test_names.moc"
