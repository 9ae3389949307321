#include "launcher/networksearch.h"

#include <QRegularExpression>

#include <algorithm>

namespace scnlauncher {
namespace {

/// The port of raw commands, where a service announces another one.
constexpr int kRawPort = 5025;
const QString kRawService = QStringLiteral("_scpi-raw._tcp");
const QString kLxiService = QStringLiteral("_lxi._tcp");

/// Undoes the tool's escapes: a backslash and three decimal digits for a byte, or a character as it is.
QString plainName(const QByteArray& escaped)
{
    QByteArray plain;
    for (int at = 0; at < escaped.size(); ++at) {
        if (escaped.at(at) != '\\' || at + 1 >= escaped.size()) {
            plain += escaped.at(at);
            continue;
        }
        bool isNumber = false;
        const int code = escaped.mid(at + 1, 3).toInt(&isNumber);
        if (isNumber && at + 3 < escaped.size()) {
            plain += static_cast<char>(code);
            at += 3;
        } else {
            plain += escaped.at(++at);
        }
    }
    return QString::fromUtf8(plain);
}

} // namespace

NetworkSearch::NetworkSearch(QObject* parent, const QString& tool,
                             std::chrono::milliseconds longest)
    : QObject(parent)
    , m_tool(tool)
{
    m_limit.setSingleShot(true);
    m_limit.setInterval(longest);
    connect(&m_limit, &QTimer::timeout, &m_process, &QProcess::kill);
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int exitCode, QProcess::ExitStatus status) {
                m_limit.stop();
                if (exitCode != 0 || status != QProcess::NormalExit) {
                    emit unavailable();
                    return;
                }
                m_output += m_process.readAllStandardOutput();
                askForNextService();
            });
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            emit unavailable();
        }
    });
}

NetworkSearch::~NetworkSearch()
{
    m_process.disconnect(this);
    m_process.kill();
    m_process.waitForFinished();
}

void NetworkSearch::start()
{
    if (m_process.state() != QProcess::NotRunning) {
        return;
    }
    m_services = QStringList{kRawService, kLxiService};
    m_output.clear();
    askForNextService();
}

void NetworkSearch::askForNextService()
{
    if (m_services.isEmpty()) {
        emit found(instrumentsIn(m_output));
        return;
    }
    // Resolved, until all that is known has been listed, in a form for programs.
    m_process.start(m_tool, {QStringLiteral("-rpt"), m_services.takeFirst()});
    m_limit.start();
}

FoundInstruments NetworkSearch::instrumentsIn(const QByteArray& output)
{
    enum Field {
        Sign,
        Interface,
        Protocol,
        Name,
        Service,
        Domain,
        Host,
        Address,
        Port,
        FieldCount
    };
    FoundInstruments instruments;
    for (const QByteArray& line : output.split('\n')) {
        const QList<QByteArray> fields = line.split(';');
        if (fields.size() < FieldCount || fields.at(Sign) != "=" || fields.at(Protocol) != "IPv4") {
            continue;
        }
        const bool isRaw = fields.at(Service) == kRawService.toLatin1();
        const int port = isRaw ? fields.at(Port).toInt() : kRawPort;
        const QString resource = QStringLiteral("TCPIP0::%1::%2::SOCKET")
                                     .arg(QString::fromLatin1(fields.at(Address)))
                                     .arg(port);
        const auto isSame = [&resource](const FoundInstrument& known) {
            return known.resource == resource;
        };
        // A machine with two interfaces hears an instrument twice.
        if (std::none_of(instruments.cbegin(), instruments.cend(), isSame)) {
            instruments.append({plainName(fields.at(Name)), resource, {}});
        }
    }
    return instruments;
}

} // namespace scnlauncher
