#pragma once

#include "launcher/linecutter.h"
#include "launcher/ownership.h"
#include "launcher/sessionprocess.h"

#include <QObject>
#include <QString>
#include <QStringList>

namespace scnlauncher {

/// A simulated instrument that runs for the lifetime of this object.
class SimulatorProcess : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SimulatorProcess)

public:
    explicit SimulatorProcess(QObject* parent);
    ~SimulatorProcess() override;

    /// Starts the simulator at `path`; one of the signals follows. A transcript that another launcher's
    /// or tab's simulator writes gets a number: dialogue.txt, dialogue-2.txt and so on.
    void start(const QString& path, const QStringList& arguments);

    /// The last lines of its standard error, the newest last.
    QStringList lastWords() const { return m_lastWords; }

signals:
    /// It serves; `resource` is that of its first transport.
    void ready(const QString& resource);
    /// It did not start, in words.
    void failed(const QString& reason);
    /// It served, and has ended by itself.
    void ended(const QString& reason);

private:
    bool claimTranscript(QString& path);
    void readOutput();
    void readErrors();
    void keep(const QByteArray& line);

    SessionProcess m_process{SessionProcess::Life::Launchers};
    Ownership m_transcript;
    LineCutter m_output;
    LineCutter m_errors;
    QStringList m_lastWords;
    bool m_isAnnounced = false; ///< ready() or failed() is out
    bool m_serves = false;
};

} // namespace scnlauncher
