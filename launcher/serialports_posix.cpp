#include "launcher/serialports.h"

#include "launcher/devicerights.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace scnlauncher {
namespace {

/// The names that the system gives to what is plugged in, by device: "usb-MAKER_Adapter_A1-if00-port0".
QHash<QString, QString> namesById(const QDir& root)
{
    QHash<QString, QString> names;
    const QFileInfoList links =
        QDir(root.filePath(QStringLiteral("dev/serial/by-id")))
            .entryInfoList(QDir::NoDotAndDotDot | QDir::System | QDir::Files);
    for (const QFileInfo& link : links) {
        names.insert(QFileInfo(link.symLinkTarget()).fileName(), link.fileName());
    }
    return names;
}

/// A port of the mainboard that has no chip behind it is listed all the same; its type is 0.
bool hasChip(const QDir& port)
{
    QFile type(port.filePath(QStringLiteral("type")));
    return !type.open(QIODevice::ReadOnly) || type.readAll().trimmed() != "0";
}

} // namespace

FoundInstruments findSerialPorts(const QString& root)
{
    const QDir top(root);
    const QHash<QString, QString> names = namesById(top);
    const QDir ports(top.filePath(QStringLiteral("sys/class/tty")));
    FoundInstruments found;
    for (const QString& port : ports.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QDir folder(ports.filePath(port));
        const QString device = top.filePath(QStringLiteral("dev/") + port);
        // Consoles and pseudo-terminals have no device behind them.
        if (!folder.exists(QStringLiteral("device")) || !hasChip(folder) ||
            !QFile::exists(device)) {
            continue;
        }
        const QString name = names.value(port);
        found.append({name.isEmpty() ? device : QStringLiteral("%1 (%2)").arg(device, name),
                      QStringLiteral("ASRL%1::INSTR").arg(device), rightsProblem(device)});
    }
    std::stable_partition(found.begin(), found.end(), [](const FoundInstrument& port) {
        return port.name.contains(QLatin1Char('('));
    });
    return found;
}

} // namespace scnlauncher
