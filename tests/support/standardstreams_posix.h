#pragma once

#include <QByteArray>
#include <QTemporaryFile>

/// Captures this process's standard output. If the test fails meanwhile, what was captured is
/// written out at the end.
class CapturedOutput
{
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// What has left the process's buffers so far; a line that was not flushed is missing.
    QByteArray flushed();

    /// The same, once it is as long as what is expected or after 5 s. Runs no event loop.
    QByteArray flushed(const QByteArray& expected);

private:
    QTemporaryFile m_file;
    int m_before;
};

/// Replaces this process's standard input with a pipe.
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

    /// Nothing is left that nobody has read.
    bool isTaken() const;

private:
    int m_before;
    int m_writeEnd = -1;
};

/// Replaces this process's standard output with a pipe, as a launcher does. Only read() reads from
/// it.
class PipedOutput
{
public:
    PipedOutput();
    ~PipedOutput();
    PipedOutput(const PipedOutput&) = delete;
    PipedOutput& operator=(const PipedOutput&) = delete;

    /// The pipe's contents, waiting up to `timeoutMs` for the first byte.
    QByteArray read(int timeoutMs);

    /// Nothing more goes in before something is read.
    bool isFull() const;

private:
    int m_before;
    int m_readEnd = -1;
};
