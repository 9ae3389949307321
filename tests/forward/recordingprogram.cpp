#include "recordingprogram.h"

#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "support/testprogram.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QSocketNotifier>
#include <QTimer>

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kCurves = 4;
constexpr int kReadingsOfTurn = 10;
constexpr int kTurnMs = 10;
constexpr int kPatienceMs = 60000;

/// The recording itself.
class Recording
{
public:
    explicit Recording(const QString& directory)
        : m_directory(directory)
        , m_store(directory)
    {
        QObject::connect(&m_store, &CurveDataDB::sigClearFinished, &m_turns, [this] { start(); });
        QObject::connect(&m_turns, &QTimer::timeout, &m_turns, [this] { turn(); });
        QObject::connect(&m_orders, &QSocketNotifier::activated, &m_orders, [this] { obey(); });
        start();
    }

private:
    void start()
    {
        for (int curve = 1; curve <= kCurves; ++curve) {
            m_ids[curve - 1] = m_store.registerCurve(QStringLiteral("10%1(V)").arg(curve));
        }
        std::puts("start");
        std::fflush(stdout);
        m_turns.start(kTurnMs);
    }

    void turn()
    {
        for (int i = 0; i < kReadingsOfTurn; ++i) {
            m_time = std::max(m_time + 1, QDateTime::currentMSecsSinceEpoch());
            const int curve = static_cast<int>(m_time % kCurves);
            m_store.appendPoint(m_ids[curve], m_time, static_cast<double>(m_time % 1000));
            std::printf("10%d(V) %lld %lld\n", curve + 1, static_cast<long long>(m_time),
                        static_cast<long long>(m_time % 1000));
        }
        std::fflush(stdout);
    }

    void obey()
    {
        char order = 0;
        if (::read(STDIN_FILENO, &order, 1) != 1) {
            QCoreApplication::quit();
            return;
        }
        m_turns.stop();
        QDir(m_directory).removeRecursively();
        m_store.clearAll();
    }

    const QString m_directory;
    const SkippedWaits m_waits;
    CurveDataDB m_store;
    QTimer m_turns;
    QSocketNotifier m_orders{STDIN_FILENO, QSocketNotifier::Read};
    int m_ids[kCurves] = {};
    qint64 m_time = 0;
};

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

RecordingProgram::RecordingProgram(const QString& dataDirectory)
{
    m_process.start(QCoreApplication::applicationFilePath(),
                    {testprogram::runningTest(), QStringLiteral("--record"), dataDirectory});
    waitForStart();
}

RecordingProgram::~RecordingProgram()
{
    QSet<QString> stored;
    kill(&stored);
}

void RecordingProgram::waitForStart()
{
    ++m_starts;
    const QDeadlineTimer deadline(kPatienceMs);
    while (m_output.count("start\n") < m_starts && !deadline.hasExpired()) {
        m_process.waitForReadyRead(kTurnMs);
        m_output += m_process.readAllStandardOutput();
    }
    m_isRecording = m_output.count("start\n") == m_starts;
}

void RecordingProgram::clear()
{
    m_process.write("c");
    m_process.waitForBytesWritten(kPatienceMs);
    waitForStart();
}

void RecordingProgram::kill(QSet<QString>* stored)
{
    if (m_process.state() == QProcess::NotRunning) {
        return;
    }
    m_process.kill();
    m_process.waitForFinished(kPatienceMs);
    m_output += m_process.readAllStandardOutput();
    const QString whole = QString::fromUtf8(m_output.left(m_output.lastIndexOf('\n')));
    for (const QString& reading : whole.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (reading != QLatin1String("start")) {
            stored->insert(reading);
        }
    }
}

bool RecordingProgram::isMeant(int argc, char** argv)
{
    return argc > 1 && qstrcmp(argv[1], "--record") == 0;
}

int RecordingProgram::play(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler(dropMessage);
    const Recording recording(QCoreApplication::arguments().value(2));
    return QCoreApplication::exec();
}
