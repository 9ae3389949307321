#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace scnlauncher {

/// The log file of a child. When it is full it becomes `name.1`, its predecessors `name.2` and so on; the
/// oldest goes.
class ChildLog
{
public:
    struct Limits
    {
        qint64 bytes = 1024 * 1024;
        int files = 5;
    };

    /// The folder is made when the first line comes.
    explicit ChildLog(const QString& path);
    ChildLog(const QString& path, const Limits& limits);

    /// Appends a line; false if it could not be written.
    bool write(const QByteArray& line);

    QString path() const { return m_file.fileName(); }

private:
    bool open();
    void rotate();

    const Limits m_limits;
    QFile m_file;
};

/// The log file in the user's state folder of what has that name: a resource, for instance.
QString logPathFor(const QString& name);

} // namespace scnlauncher
