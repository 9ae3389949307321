#include "simbench.h"
#include "support/testprogram.h"
#include "transport/linebuffer.h"
#include "transport/pace.h"
#include "transport/transcript.h"

#include <QtTest>

using namespace scnsim;

/// The parts of the transports that need no descriptor.
class TestSimTransport : public QObject
{
    Q_OBJECT

private slots:
    void linesEndAtTheLineFeed();
    void halfALineWaits();
    void longestLineIsTaken();
    void tooLongALineIsDroppedUpToItsEnd();
    void tooLongALineInPiecesTellsOnce();
    void paceLetsOutTheBytesOfTheTime();
    void noPaceLetsOutEverything();
    void transcriptLineHasTimePortAndDirection();
    void transcriptWithoutFileIsSilent();
};

void TestSimTransport::linesEndAtTheLineFeed()
{
    LineBuffer buffer;
    buffer.append("*CLS\n*IDN?\r\n\nSYST");
    QCOMPARE(shown(buffer.take().line), QStringLiteral("*CLS"));
    QCOMPARE(shown(buffer.take().line), QStringLiteral("*IDN?"));
    QCOMPARE(shown(buffer.take().line), QString());
    QVERIFY(!buffer.hasItem());
}

void TestSimTransport::halfALineWaits()
{
    LineBuffer buffer;
    buffer.append("*ID");
    QVERIFY(!buffer.hasItem());
    buffer.append("N?");
    QVERIFY(!buffer.hasItem());
    buffer.append("\n");
    QCOMPARE(shown(buffer.take().line), QStringLiteral("*IDN?"));
}

void TestSimTransport::longestLineIsTaken()
{
    LineBuffer buffer;
    buffer.append(std::string(LineBuffer::kLongestLine, 'x') + "\n");
    const LineBuffer::Item item = buffer.take();
    QVERIFY(!item.tooLong);
    QCOMPARE(item.line.size(), LineBuffer::kLongestLine);
}

void TestSimTransport::tooLongALineIsDroppedUpToItsEnd()
{
    LineBuffer buffer;
    buffer.append(std::string(LineBuffer::kLongestLine + 1, 'x') + "*IDN?\n*CLS\n");
    QVERIFY(buffer.take().tooLong);
    const LineBuffer::Item item = buffer.take();
    QVERIFY(!item.tooLong);
    QCOMPARE(shown(item.line), QStringLiteral("*CLS"));
    QVERIFY(!buffer.hasItem());
}

void TestSimTransport::tooLongALineInPiecesTellsOnce()
{
    LineBuffer buffer;
    for (int i = 0; i < 1000; ++i) {
        buffer.append(std::string(10000, 'x'));
    }
    QVERIFY(buffer.take().tooLong);
    QVERIFY(!buffer.hasItem());
    buffer.append("\n*CLS\n");
    QCOMPARE(shown(buffer.take().line), QStringLiteral("*CLS"));
    QVERIFY(!buffer.hasItem());
}

void TestSimTransport::paceLetsOutTheBytesOfTheTime()
{
    using namespace std::chrono_literals;
    Pace pace(57600);
    QVERIFY(pace.isLimited());
    // After a long rest the port's own buffer, then 5.76 bytes a millisecond.
    QCOMPARE(pace.allowance(100s), std::size_t{64});
    pace.spend(64);
    QCOMPARE(pace.allowance(100s), std::size_t{0});
    QCOMPARE(pace.allowance(100s + 1ms), std::size_t{5});
    pace.spend(5);
    QCOMPARE(pace.allowance(100s + 10ms), std::size_t{52});
}

void TestSimTransport::noPaceLetsOutEverything()
{
    Pace pace(0);
    QVERIFY(!pace.isLimited());
    QVERIFY(pace.allowance(Pace::Time(1)) > 1000000000);
    pace.spend(1000000000);
    QVERIFY(pace.allowance(Pace::Time(1)) > 1000000000);
}

void TestSimTransport::transcriptLineHasTimePortAndDirection()
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("transcript"));
    Transcript transcript;
    QVERIFY(transcript.open(path.toStdString()));
    const QDateTime before = QDateTime::currentDateTime();
    transcript.write("tcp", Transcript::Direction::Received, "FUNC \"a\\b\xC2\xB0\"");
    transcript.write("pty", Transcript::Direction::Sent, "+0");
    const QDateTime after = QDateTime::currentDateTime();

    // Read while still open: each line is flushed at once.
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0].mid(24), QStringLiteral("tcp > FUNC \"a\\\\b\\xC2\\xB0\""));
    QCOMPARE(lines[1].mid(24), QStringLiteral("pty < +0"));
    QCOMPARE(lines[2], QString());
    const QDateTime stamp = QDateTime::fromString(lines[0].left(23), Qt::ISODateWithMs);
    QVERIFY(stamp.isValid());
    QVERIFY(before <= stamp && stamp <= after);
}

void TestSimTransport::transcriptWithoutFileIsSilent()
{
    Transcript transcript;
    transcript.write("tcp", Transcript::Direction::Sent, "+0");
    QVERIFY(!transcript.open("/nowhere/at/all"));
}

SCN_TEST(TestSimTransport, testprogram::NoApplication)
#include "test_simtransport.moc"
