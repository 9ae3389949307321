#pragma once

#include <QProcess>
#include <QSet>
#include <QString>

/// A program that stores readings in a data directory, as the control program does in a scan: the test
/// program itself, whose main() passes its arguments to play() first. It says what it has stored.
class RecordingProgram
{
public:
    /// Returns when the readings begin.
    explicit RecordingProgram(const QString& dataDirectory);

    /// Kills it.
    ~RecordingProgram();
    RecordingProgram(const RecordingProgram&) = delete;
    RecordingProgram& operator=(const RecordingProgram&) = delete;

    /// Deletes the run and begins another one, as the start of a scan does, and returns when that is
    /// recording.
    void clear();

    /// Kills it, and adds what it had stored to the set: "curve time value" each.
    void kill(QSet<QString>* stored);

    bool isRecording() const { return m_isRecording; }

    static bool isMeant(int argc, char** argv);
    static int play(int argc, char** argv);

private:
    void waitForStart();

    QProcess m_process;
    QByteArray m_output;
    int m_starts = 0;
    bool m_isRecording = false;
};
