#pragma once

#include <QStringList>

#include <functional>

/// Collects the log lines of the program, with their level, while it lives, and keeps them off the
/// terminal. One at a time.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines so far, each as "debug: text", "warning: text" or "critical: text"; with a category in
    /// front if it has one, and with its file if it tells it.
    QStringList lines() const;

    /// The lines of one level so far, without the level.
    QStringList lines(QtMsgType level) const;

    /// The lines of warnings of the program with these texts.
    static QStringList warnings(const QStringList& texts);

    /// Calls `action`, once, on the logging thread, with the first line from now on that contains
    /// `text`: the line is not over before it returns.
    void whenLogged(const QString& text, std::function<void()> action);

private:
    QtMessageHandler m_previous;
};
