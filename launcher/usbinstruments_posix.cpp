#include "launcher/usbinstruments.h"

#include "launcher/devicerights.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace scnlauncher {
namespace {

/// One line of a device's folder in /sys; empty if it is not there.
QString fact(const QDir& device, const char* name)
{
    QFile file(device.filePath(QString::fromLatin1(name)));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

} // namespace

FoundInstruments findUsbInstruments(const QString& root)
{
    const QDir top(root);
    const QDir devices(top.filePath(QStringLiteral("sys/class/usbmisc")));
    FoundInstruments found;
    for (const QString& name : devices.entryList({QStringLiteral("usbtmc*")},
                                                 QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        // "device" is the interface; the folder above it is the instrument.
        const QString interface =
            QFileInfo(devices.filePath(name + QStringLiteral("/device"))).canonicalFilePath();
        const QDir instrument(QFileInfo(interface).path());
        const QString serial = fact(instrument, "serial");
        if (interface.isEmpty() || serial.isEmpty()) {
            continue;
        }
        const QString resource = QStringLiteral("USB0::0x%1::0x%2::%3::INSTR")
                                     .arg(fact(instrument, "idVendor").toUpper(),
                                          fact(instrument, "idProduct").toUpper(), serial);
        found.append({fact(instrument, "product") + QLatin1Char(' ') + serial, resource,
                      rightsProblem(top.filePath(QStringLiteral("dev/") + name))});
    }
    return found;
}

} // namespace scnlauncher
