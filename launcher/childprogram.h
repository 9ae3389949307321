#pragma once

#include <QByteArray>
#include <QColor>
#include <QObject>
#include <QProcess>

namespace scnlauncher {

/// The control program as the launcher's child: its argument is the VISA resource, its standard
/// streams carry the launcher channel (docs/launcher.md).
class ChildProgram : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChildProgram)

public:
    explicit ChildProgram(QObject* parent);

    /// Starts the program at `path` on `resource`. Its diagnostic log goes to the launcher's
    /// standard error.
    void start(const QString& path, const QString& resource);

    /// Sends "exit" and waits; a child that has not ended after 12 s is killed.
    void end();

    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }

signals:
    /// The child has shown its window; `handle` is the native window, `color` its background.
    void windowShown(qulonglong handle, const QColor& color);

    /// Any other line from the child's standard output.
    void lineReceived(const QString& line);

    /// The child has ended or could not be started.
    void ended(int exitCode);

private:
    void readLines();
    void handleLine(const QString& line);

    QProcess m_process;
    QByteArray m_pending;
};

} // namespace scnlauncher
