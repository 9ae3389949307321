#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The control program as a child process on a display, run from its own copy so that its data
/// directory is private. Plays the launcher's part in the launcher channel.
class ProgramProcess
{
public:
    explicit ProgramProcess(const QString& display);
    ~ProgramProcess();

    /// May be called again after it has ended; earlier output is forgotten.
    void start(const QStringList& arguments);
    /// What to do with the other end of the program's standard output after the first line.
    enum class Reader { Goes, StaysAndSleeps };

    /// The same, but nobody reads the program's standard output after the first line.
    void startForOneLine(const QStringList& arguments, Reader reader = Reader::Goes);
    /// The same with descriptor 0, 1 or 2 closed.
    void startWithout(int descriptor, const QStringList& arguments);

    /// Writes to the program's standard input unchanged.
    void write(const QByteArray& bytes);
    void closeInput();

    /// Waits until the output holds `count` lines that start with `prefix`; returns them.
    QStringList waitForLines(const QString& prefix, int count, int timeoutMs = 30000);
    /// All lines so far.
    QStringList lines();

    bool waitForEnd(int timeoutMs);
    /// Kills it with SIGKILL, as a power cut would.
    void kill();
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    int exitCode() const { return m_process.exitCode(); }
    bool crashed() const { return m_process.exitStatus() == QProcess::CrashExit; }
    qint64 processId() const { return m_process.processId(); }

    /// The program's log so far.
    QString log();

    /// The directory of the copy.
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
