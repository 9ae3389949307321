#pragma once

#include "launcher/foundinstrument.h"

#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>

#include <chrono>

namespace scnlauncher {

/// Asks the system's service discovery for instruments on the network that announce themselves.
class NetworkSearch : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NetworkSearch)

public:
    /// A discovery that works answers within seconds.
    static constexpr std::chrono::seconds kLongest{15};

    /// `tool` lists services as avahi-browse does; it gets `longest` for each of them.
    explicit NetworkSearch(QObject* parent, const QString& tool = QStringLiteral("avahi-browse"),
                           std::chrono::milliseconds longest = kLongest);
    ~NetworkSearch() override;

    /// Starts over; one of the signals follows.
    void start();

    /// The instruments in the tool's output.
    static FoundInstruments instrumentsIn(const QByteArray& output);

signals:
    void found(const scnlauncher::FoundInstruments& instruments);
    /// The discovery does not run on this machine.
    void unavailable();

private:
    void askForNextService();

    const QString m_tool;
    QProcess m_process;
    QTimer m_limit;
    QStringList m_services; ///< still to ask for
    QByteArray m_output;
};

} // namespace scnlauncher
