#include "app/inputreaderthread.h"
#include "support/standardstreams_posix.h"
#include "support/testprogram.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QTest>

/// Lines of standard input as the window receives them.
class TestInputReaderThread : public QObject
{
    Q_OBJECT

private slots:
    void linesArriveInOrderOnTheReceiversThread();
    void emptyLinesAreDropped();
    void linesAreEmittedOnTheReadingThread();
    void lineInPiecesIsOneLine();
    void longLineIsWhole();
    void endOfInputDeliversTheUnfinishedLineAndIdles();
    void stopEndsAWaitingThreadSoon_data();
    void stopEndsAWaitingThreadSoon();
    void stopBeforeTheStartReadsNothing();
};

namespace {

constexpr int kSoonMs = 1000;

/// Many times what a quick reader waits for input.
constexpr unsigned long kManyWaitsMs = 20;

/// The reader at work on an input of its own, and what it has delivered to this thread.
class Reader
{
public:
    /// A quick one unless told otherwise.
    explicit Reader(std::chrono::milliseconds poll = std::chrono::milliseconds(1))
        : thread(nullptr, poll)
    {
        QObject::connect(&thread, &InputReaderThread::newInputReceived, &m_receiver,
                         [this](const QString& line) { lines.append(line); });
        thread.start();
    }
    ~Reader()
    {
        thread.stop();
        thread.wait();
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    FedInput input;
    InputReaderThread thread;
    QStringList lines;

private:
    QObject m_receiver;
};

} // namespace

void TestInputReaderThread::linesArriveInOrderOnTheReceiversThread()
{
    Reader reader;
    QSemaphore emitted;
    connect(
        &reader.thread, &InputReaderThread::newInputReceived, &reader.thread,
        [&emitted] { emitted.release(); }, Qt::DirectConnection);
    reader.input.write("one\ntwo\r\n");
    // Queued: nothing is delivered but by this thread's own event loop.
    QVERIFY(emitted.tryAcquire(2, 5000));
    QCOMPARE(reader.lines, QStringList());
    QTRY_COMPARE(reader.lines, (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
    reader.input.write(" three \n");
    QTRY_COMPARE(reader.lines.size(), 3);
    QCOMPARE(reader.lines.constLast(), QStringLiteral(" three "));
}

void TestInputReaderThread::emptyLinesAreDropped()
{
    Reader reader;
    reader.input.write("\n\r\n\nlast\n");
    QTRY_VERIFY(!reader.lines.isEmpty());
    QCOMPARE(reader.lines, QStringList{QStringLiteral("last")});
}

void TestInputReaderThread::linesAreEmittedOnTheReadingThread()
{
    Reader reader;
    std::atomic<QThread*> emittedOn{nullptr};
    connect(
        &reader.thread, &InputReaderThread::newInputReceived, &reader.thread,
        [&emittedOn] { emittedOn = QThread::currentThread(); }, Qt::DirectConnection);
    reader.input.write("x\n");
    QTRY_COMPARE(emittedOn.load(), static_cast<QThread*>(&reader.thread));
}

void TestInputReaderThread::lineInPiecesIsOneLine()
{
    Reader reader;
    reader.input.write("ex");
    QTRY_VERIFY(reader.input.isTaken());
    QVERIFY(!reader.thread.wait(kManyWaitsMs));
    reader.input.write("it");
    QTRY_VERIFY(reader.input.isTaken());
    QCoreApplication::processEvents();
    QCOMPARE(reader.lines, QStringList());
    reader.input.write("\n");
    QTRY_COMPARE(reader.lines, QStringList{QStringLiteral("exit")});
}

void TestInputReaderThread::longLineIsWhole()
{
    Reader reader;
    reader.input.write(QByteArray(60000, 'x') + '\n');
    QTRY_COMPARE(reader.lines.size(), 1);
    QCOMPARE(reader.lines.constFirst(), QString(60000, QLatin1Char('x')));
}

void TestInputReaderThread::endOfInputDeliversTheUnfinishedLineAndIdles()
{
    Reader reader;
    reader.input.write("unfinished");
    reader.input.close();
    QTRY_COMPARE(reader.lines, QStringList{QStringLiteral("unfinished")});
    QVERIFY(!reader.thread.wait(kManyWaitsMs));
    QCoreApplication::processEvents();
    QCOMPARE(reader.lines.size(), 1);
}

void TestInputReaderThread::stopEndsAWaitingThreadSoon_data()
{
    QTest::addColumn<bool>("ended");
    QTest::newRow("silent input") << false;
    QTest::newRow("input at its end") << true;
}

void TestInputReaderThread::stopEndsAWaitingThreadSoon()
{
    QFETCH(bool, ended);
    Reader reader(scn::LauncherTiming().inputPoll);
    if (ended) {
        reader.input.close();
    }
    QVERIFY(!reader.thread.wait(kManyWaitsMs));
    QVERIFY(reader.thread.isRunning());
    QElapsedTimer timer;
    timer.start();
    reader.thread.stop();
    QVERIFY(reader.thread.wait(5000));
    QVERIFY2(timer.elapsed() < kSoonMs, qPrintable(QString::number(timer.elapsed())));
}

void TestInputReaderThread::stopBeforeTheStartReadsNothing()
{
    FedInput input;
    input.write("exit\n");
    InputReaderThread thread(nullptr);
    int lines = 0;
    connect(&thread, &InputReaderThread::newInputReceived, this, [&lines] { ++lines; });
    thread.stop();
    thread.start();
    QVERIFY(thread.wait(kSoonMs));
    QCoreApplication::processEvents();
    QCOMPARE(lines, 0);
}

SCN_TEST(TestInputReaderThread, QCoreApplication)
#include "test_inputreaderthread.moc"
