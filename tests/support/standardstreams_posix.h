#pragma once

#include <QByteArray>
#include <QTemporaryFile>

/// Catches what this process writes to its standard output for as long as the object lives. When the
/// test fails meanwhile, what was caught is written in the end after all.
class CapturedOutput
{
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// What has left the process's own buffers so far: a line that nobody flushed is not in it.
    QByteArray flushed();

private:
    QTemporaryFile m_file;
    int m_before;
};

/// Puts a pipe in the place of this process's standard input for as long as the object lives.
class FedInput
{
public:
    FedInput();
    ~FedInput();
    FedInput(const FedInput&) = delete;
    FedInput& operator=(const FedInput&) = delete;

    void write(const QByteArray& bytes);
    /// Ends the input.
    void close();

private:
    int m_before;
    int m_writeEnd = -1;
};

/// Puts a pipe in the place of this process's standard output for as long as the object lives, as a
/// launcher does. Nobody reads from it but read().
class PipedOutput
{
public:
    PipedOutput();
    ~PipedOutput();
    PipedOutput(const PipedOutput&) = delete;
    PipedOutput& operator=(const PipedOutput&) = delete;

    /// What is in the pipe, waiting up to `timeoutMs` for the first byte.
    QByteArray read(int timeoutMs);

private:
    int m_before;
    int m_readEnd = -1;
};
