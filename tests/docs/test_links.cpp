#include "page.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

namespace {

const QString kRoot = QStringLiteral(SCN_SOURCE_DIR "/");

/// The pages, from the top folder.
QStringList pages()
{
    const QStringList pattern{QStringLiteral("*.md")};
    QStringList names = QDir(kRoot).entryList(pattern, QDir::Files);
    for (const QString& name :
         QDir(kRoot + QStringLiteral("docs")).entryList(pattern, QDir::Files)) {
        names.append(QStringLiteral("docs/") + name);
    }
    return names;
}

bool isElsewhere(const QString& target)
{
    return target.contains(QLatin1String("://"));
}

/// What is wrong with a link of a page; empty if it leads somewhere.
QString problemOf(const QString& page, const QString& target)
{
    const QString name = target.section(QLatin1Char('#'), 0, 0);
    const QString anchor = target.section(QLatin1Char('#'), 1);
    const QString file = name.isEmpty() ? page : QFileInfo(page).dir().filePath(name);
    if (!QFileInfo::exists(kRoot + file)) {
        return target + QStringLiteral(" is not there");
    }
    const bool isLost = !anchor.isEmpty() && !Page(textOf(file)).anchors().contains(anchor);
    return isLost ? target + QStringLiteral(" leads to no heading") : QString();
}

QStringList problemsOf(const QString& file, const Page& page)
{
    QStringList problems;
    for (const PageSection& section : page.sections()) {
        for (const QString& target : section.links + section.pictures) {
            const QString problem = isElsewhere(target) ? QString() : problemOf(file, target);
            if (!problem.isEmpty()) {
                problems.append(problem);
            }
        }
    }
    return problems;
}

} // namespace

/// Links between the pages, and to pictures and files.
class TestLinks : public QObject
{
    Q_OBJECT

private slots:
    void linksLeadSomewhere_data();
    void linksLeadSomewhere();
    void everyPageIsInTheIndex();
    void lostLinksAreFound_data();
    void lostLinksAreFound();
};

void TestLinks::linksLeadSomewhere_data()
{
    QTest::addColumn<QString>("file");
    for (const QString& name : pages()) {
        QTest::newRow(qPrintable(name)) << name;
    }
}

void TestLinks::linksLeadSomewhere()
{
    QFETCH(QString, file);
    const Page page(textOf(file));
    QVERIFY(page.sections().size() > 1);
    QCOMPARE(problemsOf(file, page).join(QStringLiteral("; ")), QString());
}

void TestLinks::everyPageIsInTheIndex()
{
    const Page index(textOf(QStringLiteral("README.md")));
    QStringList linked;
    for (const PageSection& section : index.sections()) {
        for (const QString& link : section.links) {
            linked.append(link.section(QLatin1Char('#'), 0, 0));
        }
    }
    QStringList missing;
    for (const QString& name : pages()) {
        if (name != QLatin1String("README.md") && !linked.contains(name)) {
            missing.append(name);
        }
    }
    QCOMPARE(missing.join(QStringLiteral("; ")), QString());
}

void TestLinks::lostLinksAreFound_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char* text, const char* problem) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(problem);
    };
    row("[a](docs/store.md)", "");
    row("[a](docs/store.md#locks) [b](docs/none.md)", "docs/none.md is not there");
    row("[a](docs/store.md#no-heading)", "docs/store.md#no-heading leads to no heading");
    row("![a](docs/none.png)", "docs/none.png is not there");
    row("[`a`](docs/none.md)", "docs/none.md is not there");
    row("[a](https://example.org/none)", "");
    row("`[a](docs/none.md)`", "");
    row("text\n\n    [a](docs/none.md)\n", "");
    row("text\n    [a](docs/none.md)\n", "docs/none.md is not there");
    row("```\n[a](docs/none.md)\n```", "");
    row("| [a](docs/none.md) | b |", "docs/none.md is not there");
}

void TestLinks::lostLinksAreFound()
{
    QFETCH(QString, text);
    QFETCH(QString, problem);
    const QString file = QStringLiteral("README.md");
    QCOMPARE(problemsOf(file, Page(text)).join(QStringLiteral("; ")), problem);
}

SCN_TEST(TestLinks, QCoreApplication)
#include "test_links.moc"
