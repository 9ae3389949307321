#include "page.h"
#include "support/testprogram.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QTest>

namespace {

/// The texts in a source that end as a sentence does, with "…" for what is filled in.
QStringList sentencesIn(const QString& source)
{
    static const QRegularExpression texts(
        QStringLiteral(R"("(?:[^"\\\n]|\\.)*"(?:\s*"(?:[^"\\\n]|\\.)*")*)"));
    static const QRegularExpression joints(QStringLiteral(R"("\s*"|"$|^")"));
    static const QRegularExpression gaps(QStringLiteral("%\\d"));
    QStringList sentences;
    QRegularExpressionMatchIterator matches = texts.globalMatch(source);
    while (matches.hasNext()) {
        QString text = matches.next().captured();
        text.remove(joints).replace(gaps, QStringLiteral("…"));
        if (text.endsWith(QChar(0x3002))) {
            sentences.append(text);
        }
    }
    return sentences;
}

} // namespace

/// The page on connecting an instrument explains what the launcher says.
class TestConnectingPage : public QObject
{
    Q_OBJECT

private slots:
    void everySentenceIsExplained();
    void sentencesAreFound_data();
    void sentencesAreFound();
};

void TestConnectingPage::everySentenceIsExplained()
{
    const QString page = textOf(QStringLiteral("docs/connecting.md"));
    const QDir root(QStringLiteral(SCN_SOURCE_DIR));
    QDirIterator sources(root.filePath(QStringLiteral("launcher")), {QStringLiteral("*.cpp")},
                         QDir::Files, QDirIterator::Subdirectories);
    int count = 0;
    QStringList missing;
    while (sources.hasNext()) {
        const QString name = root.relativeFilePath(sources.next());
        for (const QString& sentence : sentencesIn(textOf(name))) {
            ++count;
            if (!page.contains(sentence)) {
                missing.append(name + QStringLiteral(": ") + sentence);
            }
        }
    }
    QVERIFY(count > 0);
    QVERIFY2(missing.isEmpty(), missing.join(QStringLiteral("; ")).toUtf8().constData());
}

void TestConnectingPage::sentencesAreFound_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("sentences");
    const auto row = [](const char* source, const char* sentences) {
        QTest::newRow(source) << QString::fromUtf8(source) << QString::fromUtf8(sentences);
    };
    row("f(\"甲。\"); g(\"乙\"); h(\"丙。\");", "甲。|丙。");
    row("f(\"甲，\"\n  \"乙。\");", "甲，乙。");
    row("f(\"甲 %1 乙（%2）。\", x);", "甲 … 乙（…）。");
    row("f(\"a \\\"b\\\"\", \"甲。\");", "甲。");
    row("f(\"\", 'c', \"乙\");", "");
}

void TestConnectingPage::sentencesAreFound()
{
    QFETCH(QString, source);
    QFETCH(QString, sentences);
    QCOMPARE(sentencesIn(source).join(QLatin1Char('|')), sentences);
}

SCN_TEST(TestConnectingPage, QCoreApplication)
#include "test_connectingpage.moc"
