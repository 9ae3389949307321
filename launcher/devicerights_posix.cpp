#include "launcher/devicerights.h"

#include "visa/resourcename.h"
#include "visa/usbinstrument_posix.h"

#include <QCoreApplication>
#include <QFile>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace scnlauncher {

QString deviceOf(const QString& resource, const QString& root)
{
    const auto name = scn::visa::parseResourceName(resource.trimmed().toStdString());
    if (!name) {
        return {};
    }
    if (name->kind == scn::visa::ResourceName::Kind::Usb) {
        const auto instrument = scn::visa::findUsbInstrument(*name, root.toStdString());
        return instrument ? QString::fromStdString(instrument->deviceFile.string()) : QString();
    }
    return QString::fromStdString(name->device);
}

QString rightsProblem(const QString& device)
{
    if (device.isEmpty()) {
        return {};
    }
    const QByteArray path = QFile::encodeName(device);
    if (::faccessat(AT_FDCWD, path.constData(), R_OK | W_OK, AT_EACCESS) == 0 || errno != EACCES) {
        return {};
    }
    struct stat facts = {};
    const bool isKnown = ::stat(path.constData(), &facts) == 0;
    constexpr mode_t kGroupMayUse = S_IRGRP | S_IWGRP;
    const group* const owners = isKnown ? ::getgrgid(facts.st_gid) : nullptr;
    if (!owners || facts.st_gid == 0 || (facts.st_mode & kGroupMayUse) != kGroupMayUse) {
        return QCoreApplication::translate("DeviceRights", "没有打开 %1 的权限，请询问系统管理员。")
            .arg(device);
    }
    return QCoreApplication::translate(
               "DeviceRights",
               "没有打开 %1 的权限：请加入用户组 %2（sudo usermod -aG %2 $USER），然后重新登录。")
        .arg(device, QString::fromLocal8Bit(owners->gr_name));
}

} // namespace scnlauncher
