#pragma once

#include "launcher/childlog.h"
#include "launcher/childstatus.h"
#include "launcher/claimedprocess.h"
#include "launcher/linecutter.h"

#include <QColor>
#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace scnlauncher {

/// How long the end of a child may take.
struct EndTiming
{
    /// The program gives each of its two threads 5 s before it terminates them.
    std::chrono::milliseconds exit{12000};
    /// A program without an instrument does not hear "exit".
    std::chrono::milliseconds deaf{1000};
    std::chrono::milliseconds terminate{2000};
};

/// How a child ended.
struct ChildEnd
{
    bool isWanted = false; ///< end() was called
    bool hasStarted = true;
    bool hasCrashed = false;
    int exitCode = 0;
};

/// The control program as the launcher's child: its argument is the VISA resource, its standard streams carry
/// the launcher channel (docs/launcher.md). Both outputs are read at all times, and no call waits.
class InstrumentChild : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InstrumentChild)

public:
    /// What to start.
    struct Call
    {
        QString program;
        QString resource;
        QProcessEnvironment environment;
        QString logPath;
        /// Kept until the child has ended; may be null.
        std::shared_ptr<ChildClaim> claim = {};
    };
    /// Says why a window must not be embedded; empty if it may. Arguments: its handle, the child's process.
    using WindowCheck = std::function<QString(qulonglong, qint64)>;

    InstrumentChild(QObject* parent, WindowCheck check, const EndTiming& timing = {});
    ~InstrumentChild() override;

    void start(const Call& call);

    /// Asks the child to end, and forces it after a while; ended() follows.
    void end();

    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    bool isEnding() const { return m_isEnding; }
    qint64 processId() const { return m_process.processId(); }
    const ChildStatus& status() const { return m_status; }
    QString logPath() const { return m_log ? m_log->path() : QString(); }
    /// The last lines of both outputs, the newest last.
    QStringList lastWords() const { return m_lastWords; }
    /// Since the last line; -1 before the first.
    qint64 msSinceLastLine() const { return m_lastLine.isValid() ? m_lastLine.elapsed() : -1; }

signals:
    /// The child has shown its window; `handle` is the native window, `color` its background.
    void windowShown(qulonglong handle, const QColor& color);
    /// The child has named a window that must not be embedded.
    void windowRefused(const QString& reason);
    void statusChanged();
    /// A line was too long. The status says so too.
    void lineCut();
    void ended(const scnlauncher::ChildEnd& end);

private:
    void readOutput();
    void readErrors();
    void takeOutput(const QByteArray& line);
    void takeErrors(const QByteArray& line);
    void keep(const QString& line);
    void tellIfCut(const QByteArray& line);
    void escalate();
    void finish(const ChildEnd& end);

    enum class Force { Asked, Heard, Terminated, Killed };

    const WindowCheck m_check;
    const EndTiming m_timing;
    ClaimedProcess m_process;
    LineCutter m_output;
    LineCutter m_errors;
    std::unique_ptr<ChildLog> m_log;
    ChildStatus m_status;
    QStringList m_lastWords;
    QElapsedTimer m_lastLine;
    QTimer m_endTimer;
    bool m_isEnding = false;
    bool m_hasEnded = false;
    Force m_force = Force::Asked;
};

} // namespace scnlauncher

Q_DECLARE_METATYPE(scnlauncher::ChildEnd)
