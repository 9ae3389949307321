#include "launcher/logline.h"

#include <QHash>
#include <QRegularExpression>

namespace scnlauncher {

QString messagePattern()
{
    return QStringLiteral("%{time yyyy-MM-dd hh:mm:ss.zzz} %{type} %{message}");
}

LogLine LogLine::parse(const QString& line)
{
    static const QHash<QString, Level> levels = {
        {QStringLiteral("debug"), Level::Debug},     {QStringLiteral("info"), Level::Info},
        {QStringLiteral("warning"), Level::Warning}, {QStringLiteral("critical"), Level::Critical},
        {QStringLiteral("fatal"), Level::Fatal},
    };
    static const QRegularExpression form(
        QStringLiteral("^(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d)\\.\\d{3} (\\w+) (.*)$"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch() || !levels.contains(match.captured(2))) {
        return {Level::Unknown, line};
    }
    return {levels.value(match.captured(2)), match.captured(3), match.captured(1)};
}

} // namespace scnlauncher
