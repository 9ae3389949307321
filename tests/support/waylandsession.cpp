#include "support/waylandsession.h"

#include <QFile>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QtCore/qtestsupport_core.h>

namespace {

constexpr int kStartWaitMs = 20000;
const QString kSocket = QStringLiteral("session");

} // namespace

WaylandSession::WaylandSession()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_directory.path());
    m_compositor.setProcessEnvironment(environment);
    m_compositor.setStandardOutputFile(QProcess::nullDevice());
    m_compositor.setStandardErrorFile(QProcess::nullDevice());
    m_compositor.start(QStringLiteral("weston"),
                       {QStringLiteral("--backend=headless-backend.so"),
                        QStringLiteral("--xwayland"), QStringLiteral("--use-pixman"),
                        QStringLiteral("--no-config"), QStringLiteral("--width=1600"),
                        QStringLiteral("--height=1000"), QStringLiteral("--idle-time=0"),
                        QStringLiteral("--socket=") + kSocket,
                        QStringLiteral("--log=") + m_directory.filePath(QStringLiteral("log"))});
    const QRegularExpression listens(QStringLiteral("xserver listening on display (:\\d+)"));
    [[maybe_unused]] const bool hasAnswered = QTest::qWaitFor(
        [&] {
            setName(listens.match(log()).captured(1));
            return !name().isEmpty() || m_compositor.state() == QProcess::NotRunning;
        },
        kStartWaitMs);
}

WaylandSession::~WaylandSession()
{
    m_compositor.terminate();
    m_compositor.waitForFinished();
}

QString WaylandSession::socket() const
{
    return m_directory.filePath(kSocket);
}

QString WaylandSession::log() const
{
    QFile file(m_directory.filePath(QStringLiteral("log")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
