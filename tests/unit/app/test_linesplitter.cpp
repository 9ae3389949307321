#include "app/linesplitter.h"

#include <QTest>

class TestLineSplitter : public QObject
{
    Q_OBJECT

private slots:
    void cutsLines_data();
    void cutsLines();
    void piecesJoinToTheSameLines();
    void unfinishedLineComesOnceAtTheEnd();
    void textIsInTheLocalesEncoding();
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
    const QString text = QStringLiteral("通道");
    QCOMPARE(splitter.feed(text.toLocal8Bit() + '\n'), QStringList{text});
}

QTEST_GUILESS_MAIN(TestLineSplitter)
#include "test_linesplitter.moc"
