#pragma once

#include <QMutex>
#include <QMutexLocker>
#include <QStringList>
#include <QtGlobal>

/// Catches all log lines while it lives; one may live at a time.
class LogCapture
{
public:
    LogCapture()
    {
        s_current = this;
        m_previous = qInstallMessageHandler(&LogCapture::handle);
    }

    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The warnings in order; a line of another kind stands with its number in front.
    QStringList lines() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_lines;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        const QMutexLocker locker(&s_current->m_mutex);
        const bool expected = type == QtWarningMsg && qstrcmp(context.category, "default") == 0 &&
                              !context.file && context.line == 0;
        s_current->m_lines.append(expected ? text : QString::number(type) + text);
    }

    inline static LogCapture* s_current = nullptr;

    mutable QMutex m_mutex;
    QStringList m_lines;
    QtMessageHandler m_previous = nullptr;
};
