#include "support/virtualdisplay.h"

namespace {

constexpr int kStartWaitMs = 20000;

} // namespace

VirtualDisplay::VirtualDisplay(int resolution, const QSize& size)
{
    // The server picks a free number and prints it. Without -noreset it would restart whenever its
    // last client leaves, and refuse clients meanwhile.
    QStringList arguments{QStringLiteral("-displayfd"),
                          QStringLiteral("1"),
                          QStringLiteral("-screen"),
                          QStringLiteral("0"),
                          QStringLiteral("%1x%2x24").arg(size.width()).arg(size.height()),
                          QStringLiteral("-nolisten"),
                          QStringLiteral("tcp"),
                          QStringLiteral("-noreset")};
    if (resolution > 0) {
        arguments << QStringLiteral("-dpi") << QString::number(resolution);
    }
    m_server.start(QStringLiteral("Xvfb"), arguments);
    while (!m_server.canReadLine()) {
        if (!m_server.waitForReadyRead(kStartWaitMs)) {
            return;
        }
    }
    setName(QLatin1Char(':') + QString::fromLatin1(m_server.readLine()).trimmed());
}

VirtualDisplay::~VirtualDisplay()
{
    m_server.terminate();
    m_server.waitForFinished();
}
