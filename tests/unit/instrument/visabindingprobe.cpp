// Prints what the gate to the instrument is bound to: creates it before main(), as the program
// does, then opens a resource that only a platform library can know and queries it.

#include "instrument/cdevicevisa.h"

#include <QTextStream>

#include <cstdio>

namespace {

CDeviceVisa* const g_device = CDeviceVisa::instance();

void say(const QString& text)
{
    QTextStream(stdout) << "probe: " << text << '\n';
}

} // namespace

int main()
{
    say(QStringLiteral("main, last error \"%1\"").arg(g_device->lastError()));
    if (!g_device->connectDevice(QStringLiteral("PLATFORM0::ONLY::INSTR"))) {
        say(g_device->lastError());
        return 0;
    }
    say(g_device->sendCommand(QStringLiteral("*IDN?"), 4321));
    g_device->disconnectDevice();
    return 0;
}
