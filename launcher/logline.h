#pragma once

#include <QString>

namespace scnlauncher {

/// One line of the child's log, in the form that the launcher gives it (messagePattern()).
struct LogLine
{
    enum class Level { Unknown, Debug, Info, Warning, Critical, Fatal };

    Level level = Level::Unknown;
    QString text;
    /// To the second, as it stands there.
    QString time = {};

    /// A line of another form is all text.
    static LogLine parse(const QString& line);
};

/// The value of QT_MESSAGE_PATTERN for the child.
QString messagePattern();

} // namespace scnlauncher
