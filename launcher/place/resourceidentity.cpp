#include "launcher/place/resourceidentity.h"

#include "visa/hostlookup_posix.h"
#include "visa/resourcename.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>
#include <QSysInfo>

namespace scnlauncher {
namespace {

constexpr int kLongestName = 80;
constexpr int kHashDigits = 8;
const QString kSeparator = QStringLiteral("::");

QString serialIdentity(const QString& device)
{
    const QString real = QFileInfo(device).canonicalFilePath();
    return QStringLiteral("ASRL%1::INSTR").arg(real.isEmpty() ? device : real);
}

/// Whether the host is this machine, as far as its spelling tells.
bool isThisMachine(const QString& host)
{
    static const QStringList spellings = {
        QStringLiteral("localhost"),     QStringLiteral("localhost.localdomain"),
        QStringLiteral("ip6-localhost"), QStringLiteral("ip6-loopback"),
        QStringLiteral("::1"),           QStringLiteral("::"),
        QStringLiteral("0.0.0.0"),
    };
    const QString own = QSysInfo::machineHostName().toLower();
    return spellings.contains(host) || host == own || host == own + QStringLiteral(".local");
}

/// `host` is without the brackets of an IPv6 address.
QString hostIdentity(const QString& host)
{
    QString spelling =
        QString::fromStdString(scn::visa::addressSpelling(host.toLower().toStdString()));
    // The dot that ends a full name.
    if (spelling.endsWith(QLatin1Char('.'))) {
        spelling.chop(1);
    }
    if (isThisMachine(spelling)) {
        return QStringLiteral("127.0.0.1");
    }
    return spelling.contains(QLatin1Char(':')) ? QStringLiteral("[%1]").arg(spelling) : spelling;
}

QString usbIdentity(const scn::visa::ResourceName& name)
{
    const auto hex = [](uint number) {
        return QStringLiteral("%1").arg(number, 4, 16, QLatin1Char('0')).toUpper();
    };
    return QStringLiteral("USB0::0x%1::0x%2::%3::%4::INSTR")
        .arg(hex(name.vendor), hex(name.product),
             QString::fromStdString(name.serialNumber).toUpper(),
             QString::number(name.usbInterface));
}

/// For the resources that only a platform's library opens.
QString standardIdentity(const QString& resource)
{
    // Host, and the device behind it.
    static const QRegularExpression lan(QStringLiteral(
        "^TCPIP[0-9]*::(?|\\[([^\\]]+)\\]|([^:\\[]+))(?:::(?!INSTR$)([^:]+))?(?:::INSTR)?$"));
    static const QRegularExpression kinds(QStringLiteral("^[A-Z]+$"));
    const QRegularExpressionMatch match = lan.match(resource.toUpper());
    if (match.hasMatch()) {
        const QString device = match.captured(2);
        return QStringLiteral("TCPIP0::%1::%2::INSTR")
            .arg(hostIdentity(match.captured(1)),
                 device.isEmpty() ? QStringLiteral("INST0") : device);
    }
    QStringList parts = resource.toUpper().split(kSeparator);
    if (kinds.match(parts.constFirst()).hasMatch()) {
        parts.first() += QLatin1Char('0');
    }
    return parts.join(kSeparator);
}

} // namespace

QString resourceIdentity(const QString& resource)
{
    const QString text = resource.section(QLatin1Char(';'), 0, 0).trimmed();
    const auto name = scn::visa::parseResourceName(text.toStdString());
    if (!name) {
        return standardIdentity(text);
    }
    switch (name->kind) {
    case scn::visa::ResourceName::Kind::Serial:
        return serialIdentity(QString::fromStdString(name->device));
    case scn::visa::ResourceName::Kind::Usb:
        return usbIdentity(*name);
    case scn::visa::ResourceName::Kind::Socket:
        break;
    }
    return QStringLiteral("TCPIP0::%1::%2::SOCKET")
        .arg(hostIdentity(QString::fromStdString(name->host)), QString::number(name->port));
}

QString readableName(const QString& text)
{
    static const QRegularExpression separators(QStringLiteral("::|/"));
    static const QRegularExpression others(QStringLiteral("[^A-Za-z0-9._-]+"));
    QString name = text;
    name.replace(separators, QStringLiteral("-"));
    const QString plain = name;
    name.replace(others, QStringLiteral("-"));
    // A leading dot would hide the folder, or name the one above.
    if (name == plain && name.size() <= kLongestName && !name.startsWith(QLatin1Char('.')) &&
        !name.isEmpty()) {
        return name;
    }
    const QByteArray hash =
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha1).toHex();
    return QStringLiteral("x%1-%2").arg(name.left(kLongestName),
                                        QString::fromLatin1(hash.constData(), kHashDigits));
}

} // namespace scnlauncher
