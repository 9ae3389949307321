#include "launcher/usbinstruments.h"

#include "launcher/devicerights.h"
#include "visa/usbinstrument_posix.h"

namespace scnlauncher {

FoundInstruments findUsbInstruments(const QString& root)
{
    FoundInstruments found;
    for (const scn::visa::UsbInstrument& instrument :
         scn::visa::usbInstruments(root.toStdString())) {
        const QString name = QString::fromStdString(instrument.productName).trimmed() +
                             QLatin1Char(' ') + QString::fromStdString(instrument.serialNumber);
        found.append({name, QString::fromStdString(usbResource(instrument)),
                      rightsProblem(QString::fromStdString(instrument.deviceFile.string()))});
    }
    return found;
}

} // namespace scnlauncher
