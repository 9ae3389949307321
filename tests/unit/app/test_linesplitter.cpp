#include "app/linesplitter.h"
#include "support/testprogram.h"

#include <QTest>
#include <QTextCodec>

using namespace scn;

namespace {

const char* const kTooLong = "标准输入的一行超过 64 KiB，已丢弃";

} // namespace

class TestLineSplitter : public QObject
{
    Q_OBJECT

private slots:
    void cutsLines_data();
    void cutsLines();
    void piecesJoinToTheSameLines();
    void unfinishedLineComesOnceAtTheEnd();
    void textIsInTheLocalesEncoding();
    void lineAboveTheLimitIsDropped();
    void lineWithoutAnEndIsNotGathered();
};

void TestLineSplitter::cutsLines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("nothing") << QByteArray() << QStringList();
    QTest::newRow("one") << QByteArray("a\n") << QStringList{QStringLiteral("a")};
    QTest::newRow("two") << QByteArray("a\nb\n")
                         << QStringList{QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("carriage return and line feed")
        << QByteArray("a\r\n") << QStringList{QStringLiteral("a")};
    QTest::newRow("lone carriage return stays inside")
        << QByteArray("a\rb\n") << QStringList{QStringLiteral("a\rb")};
    QTest::newRow("only one carriage return goes")
        << QByteArray("a\r\r\n") << QStringList{QStringLiteral("a\r")};
    QTest::newRow("empty lines") << QByteArray("\n\r\n") << QStringList{QString(), QString()};
    QTest::newRow("zero byte") << QByteArray("exit\0x\n\0y\n", 10)
                               << QStringList{QStringLiteral("exit") + QChar(0) + QLatin1Char('x'),
                                              QString(QChar(0)) + QLatin1Char('y')};
    QTest::newRow("unfinished") << QByteArray("a\nb") << QStringList{QStringLiteral("a")};
}

void TestLineSplitter::cutsLines()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, lines);
    LineSplitter splitter;
    QCOMPARE(splitter.feed(bytes), lines);
}

void TestLineSplitter::piecesJoinToTheSameLines()
{
    const QByteArray bytes("first\r\nsecond\n\nlast");
    for (int cut = 0; cut <= bytes.size(); ++cut) {
        LineSplitter splitter;
        QStringList lines = splitter.feed(bytes.left(cut));
        lines += splitter.feed(bytes.mid(cut));
        lines += splitter.finish();
        QCOMPARE(lines, (QStringList{QStringLiteral("first"), QStringLiteral("second"), QString(),
                                     QStringLiteral("last")}));
    }
}

void TestLineSplitter::unfinishedLineComesOnceAtTheEnd()
{
    LineSplitter splitter;
    QCOMPARE(splitter.feed("exit"), QStringList());
    QCOMPARE(splitter.finish(), QStringList{QStringLiteral("exit")});
    QCOMPARE(splitter.finish(), QStringList());
}

void TestLineSplitter::textIsInTheLocalesEncoding()
{
    LineSplitter splitter;
    QCOMPARE(splitter.feed("\xE9\n"), QStringList{QStringLiteral("\uFFFD")});
    QTextCodec* const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QStringList lines = splitter.feed("\xE9\n");
    QTextCodec::setCodecForLocale(before);
    QCOMPARE(lines, QStringList{QStringLiteral("é")});
}

void TestLineSplitter::lineAboveTheLimitIsDropped()
{
    LineSplitter splitter;
    const QByteArray longest(64 * 1024, 'x');
    QCOMPARE(splitter.feed(longest + "\nexit\n"),
             (QStringList{QString::fromLatin1(longest), QStringLiteral("exit")}));
    QTest::ignoreMessage(QtWarningMsg, kTooLong);
    QCOMPARE(splitter.feed(longest + "y\nexit\n"), QStringList{QStringLiteral("exit")});
    // In pieces: the first byte too many drops the whole line.
    QCOMPARE(splitter.feed(longest), QStringList());
    QTest::ignoreMessage(QtWarningMsg, kTooLong);
    QCOMPARE(splitter.feed("y"), QStringList());
    QCOMPARE(splitter.feed(longest + longest), QStringList());
    QCOMPARE(splitter.feed("exit\nnext\n"), QStringList{QStringLiteral("next")});
}

void TestLineSplitter::lineWithoutAnEndIsNotGathered()
{
    LineSplitter splitter;
    const QByteArray piece(1 << 20, 'x');
    QTest::ignoreMessage(QtWarningMsg, kTooLong);
    // More than a line of text could hold if it were collected.
    for (int mebibytes = 0; mebibytes < 4096; ++mebibytes) {
        QCOMPARE(splitter.feed(piece), QStringList());
    }
    QCOMPARE(splitter.finish(), QStringList());
}

SCN_TEST(TestLineSplitter, QCoreApplication)
#include "test_linesplitter.moc"
