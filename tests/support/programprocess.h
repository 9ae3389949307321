#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The control program as a child process on a display, run from a copy of its own so that its data
/// directory is private. Plays the launcher's side of the launcher channel.
class ProgramProcess
{
public:
    explicit ProgramProcess(const QString& display);
    ~ProgramProcess();

    /// May be called again when it has ended: what it has printed until then is forgotten.
    void start(const QStringList& arguments);
    /// What becomes of the other end of the program's standard output behind the first line.
    enum class Reader { Goes, StaysAndSleeps };

    /// The same, but nobody reads the program's standard output behind its first line.
    void startForOneLine(const QStringList& arguments, Reader reader = Reader::Goes);
    /// The same with one of the descriptors 0, 1 and 2 closed.
    void startWithout(int descriptor, const QStringList& arguments);

    /// Writes to the program's standard input as it stands.
    void write(const QByteArray& bytes);
    void closeInput();

    /// Waits until the output holds `count` lines that start with `prefix`; gives those lines.
    QStringList waitForLines(const QString& prefix, int count, int timeoutMs = 30000);
    /// All lines so far.
    QStringList lines();

    bool waitForEnd(int timeoutMs);
    /// Ends it by SIGKILL, as a power cut would.
    void kill();
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    int exitCode() const { return m_process.exitCode(); }
    bool crashed() const { return m_process.exitStatus() == QProcess::CrashExit; }
    qint64 processId() const { return m_process.processId(); }

    /// What the program has logged so far.
    QString log();

    /// The directory that the copy lives in.
    QString directory() const { return m_directory.path(); }

    /// The native handle of the last "WID:" line, 0 if there is none.
    qulonglong windowHandle();

private:
    void collect();

    QTemporaryDir m_directory;
    QProcess m_process;
    QByteArray m_output;
    QByteArray m_errors;
};
