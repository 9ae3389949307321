#include "page.h"
#include "support/testprogram.h"

#include <QRegularExpression>
#include <QTest>

#include <algorithm>

namespace {

const QString kEnglish = QStringLiteral("README.md");
const QString kChinese = QStringLiteral("README.zh-CN.md");

/// The command of a line of code, ahead of the words that explain it.
QString commandIn(const QString& line)
{
    static const QRegularExpression gap(QStringLiteral("\\s{2,}.*$"));
    return QString(line).remove(gap);
}

QStringList labelled(const char* label, QStringList things)
{
    // The order of words differs between languages.
    things.sort();
    return things.replaceInStrings(QRegularExpression(QStringLiteral("^")),
                                   QString::fromLatin1(label));
}

/// What a page has whatever its language: headings by their levels, commands, code, tables by what their
/// first column names, links and pictures. Either page links to the other.
QStringList skeletonOf(const Page& page)
{
    QStringList bones;
    for (const PageSection& section : page.sections()) {
        bones.append(QStringLiteral("heading %1").arg(section.level));
        for (const QString& line : section.codeLines) {
            bones.append(QStringLiteral("command ") + commandIn(line));
        }
        for (const QString& cell : section.firstCells) {
            const QStringList names = codeSpansIn(cell) + linksIn(cell);
            bones.append(QStringLiteral("row ") + names.join(QLatin1Char(' ')));
        }
        bones += labelled("code ", section.codeSpans);
        bones += labelled("picture ", section.pictures);
        QStringList links = section.links;
        links.replaceInStrings(kChinese, kEnglish);
        bones += labelled("link ", links);
    }
    return bones;
}

} // namespace

/// The first page, which is there in two languages.
class TestReadme : public QObject
{
    Q_OBJECT

private slots:
    void languagesSayTheSame();
    void differencesAreFound_data();
    void differencesAreFound();
};

void TestReadme::languagesSayTheSame()
{
    const QStringList english = skeletonOf(Page(textOf(kEnglish)));
    const QStringList chinese = skeletonOf(Page(textOf(kChinese)));
    QVERIFY(english.size() > 1);
    for (int at = 0; at < std::max(english.size(), chinese.size()); ++at) {
        QCOMPARE(chinese.value(at), english.value(at));
    }
}

void TestReadme::differencesAreFound_data()
{
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<bool>("isSame");
    const auto row = [](const char* english, const char* chinese, bool isSame) {
        QTest::newRow(chinese) << QString::fromUtf8(english) << QString::fromUtf8(chinese)
                               << isSame;
    };
    row("# A", "# 甲", true);
    row("# A", "## 甲", false);
    row("# A\n## B", "# 甲", false);
    row("text\n\n    ./run  starts", "文\n\n    ./run  启动", true);
    row("text\n\n    ./run  starts", "文\n\n    ./test  启动", false);
    row("text\n\n    ./run\n    ./test", "文\n\n    ./run", false);
    row("`a` then `b`", "先 `b` 后 `a`", true);
    row("`a` then `b`", "先 `a` 后 `a`", false);
    row("# A\n`a`\n## B\n`b`", "# 甲\n`b`\n## 乙\n`a`", false);
    row("| A |\n|---|\n| `x` |", "| 甲 |\n|---|\n| `x` |", true);
    row("| A |\n|---|\n| `x` |", "| 甲 |\n|---|\n| `x` |\n| `y` |", false);
    row("| A |\n|---|\n| `x` | `y` |", "| 甲 |\n|---|\n| `y` | `x` |", false);
    row("| A |\n|---|\n| x |", "| 甲 |\n|---|\n| 子 |", true);
    row("| [A](a.md) |", "| [甲](a.md) |", true);
    row("| [A](a.md) |", "| [甲](b.md) |", false);
    row("![a](a.png)", "![甲](b.png)", false);
    row("![a](a.png)", "[甲](a.png)", false);
    row("[中文](README.zh-CN.md)", "[English](README.md)", true);
}

void TestReadme::differencesAreFound()
{
    QFETCH(QString, english);
    QFETCH(QString, chinese);
    QFETCH(bool, isSame);
    QCOMPARE(skeletonOf(Page(english)) == skeletonOf(Page(chinese)), isSame);
}

SCN_TEST(TestReadme, QCoreApplication)
#include "test_readme.moc"
