#include "support/logcapture.h"

#include <QMutex>
#include <QPair>
#include <QVector>

#include <utility>

namespace {

using LogLine = QPair<QtMsgType, QString>;

QMutex g_mutex;
QVector<LogLine> g_lines;
QString g_awaited;
std::function<void()> g_action;

/// What a log line tells beside its text; nothing for a line of the program's own.
QString originOf(const QMessageLogContext& context)
{
    QString origin;
    if (qstrcmp(context.category, "default") != 0) {
        origin += QString::fromUtf8(context.category) + QStringLiteral(": ");
    }
    if (context.file) {
        origin += QString::fromUtf8(context.file) + QStringLiteral(": ");
    }
    return origin;
}

void collect(QtMsgType level, const QMessageLogContext& context, const QString& text)
{
    std::function<void()> action;
    {
        const QMutexLocker locker(&g_mutex);
        g_lines.append({level, originOf(context) + text});
        if (text.contains(g_awaited)) {
            action.swap(g_action);
        }
    }
    if (action) {
        action();
    }
}

QString levelName(QtMsgType level)
{
    switch (level) {
    case QtDebugMsg:
        return QStringLiteral("debug: ");
    case QtInfoMsg:
        return QStringLiteral("info: ");
    case QtWarningMsg:
        return QStringLiteral("warning: ");
    case QtCriticalMsg:
        return QStringLiteral("critical: ");
    case QtFatalMsg:
        return QStringLiteral("fatal: ");
    }
    return {};
}

} // namespace

LogCapture::LogCapture()
    : m_previous(qInstallMessageHandler(collect))
{
    const QMutexLocker locker(&g_mutex);
    g_lines.clear();
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    whenLogged({}, {});
}

QStringList LogCapture::lines() const
{
    const QMutexLocker locker(&g_mutex);
    QStringList lines;
    for (const LogLine& line : qAsConst(g_lines)) {
        lines.append(levelName(line.first) + line.second);
    }
    return lines;
}

QStringList LogCapture::warnings(const QStringList& texts)
{
    QStringList lines;
    for (const QString& text : texts) {
        lines.append(levelName(QtWarningMsg) + text);
    }
    return lines;
}

void LogCapture::whenLogged(const QString& text, std::function<void()> action)
{
    const QMutexLocker locker(&g_mutex);
    g_awaited = text;
    g_action = std::move(action);
}

QStringList LogCapture::lines(QtMsgType level) const
{
    const QMutexLocker locker(&g_mutex);
    QStringList lines;
    for (const LogLine& line : qAsConst(g_lines)) {
        if (line.first == level) {
            lines.append(line.second);
        }
    }
    return lines;
}
