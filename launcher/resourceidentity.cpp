#include "launcher/resourceidentity.h"

#include "visa/resourcename.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

namespace scnlauncher {
namespace {

constexpr int kLongestName = 80;
constexpr int kHashDigits = 8;
/// Interface type and board, vendor, product, serial number, USB interface.
constexpr int kUsbParts = 5;
/// Interface type and board, host, LAN device.
constexpr int kLanParts = 3;

const QString kSeparator = QStringLiteral("::");

QString serialIdentity(const QString& device)
{
    const QString real = QFileInfo(device).canonicalFilePath();
    return QStringLiteral("ASRL%1::INSTR").arg(real.isEmpty() ? device : real);
}

QString hostIdentity(const QString& host)
{
    const QString lowered = host.toLower();
    return lowered == QLatin1String("localhost") ? QStringLiteral("127.0.0.1") : lowered;
}

/// A number as the standard writes it, "0x049F"; any other text unchanged.
QString usbNumber(const QString& text)
{
    bool isNumber = false;
    const int base = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? 16 : 10;
    const uint number = text.toUInt(&isNumber, base);
    return isNumber ? QStringLiteral("0x%1").arg(number, 4, 16, QLatin1Char('0')).toUpper() : text;
}

/// For the resources that only a platform's library opens, and for USB ones.
QString standardIdentity(const QString& resource)
{
    static const QRegularExpression kinds(QStringLiteral("^[A-Z]+$"));
    QStringList parts = resource.toUpper().split(kSeparator);
    if (kinds.match(parts.constFirst()).hasMatch()) {
        parts.first() += QLatin1Char('0');
    }
    const QString kind = parts.constFirst();
    if (kind.startsWith(QLatin1String("USB")) || kind.startsWith(QLatin1String("TCPIP"))) {
        if (parts.constLast() != QLatin1String("INSTR")) {
            parts.append(QStringLiteral("INSTR"));
        }
    }
    if (kind.startsWith(QLatin1String("USB")) && parts.size() >= kUsbParts) {
        parts[1] = usbNumber(parts.at(1));
        parts[2] = usbNumber(parts.at(2));
        if (parts.size() == kUsbParts) {
            parts.insert(kUsbParts - 1, QStringLiteral("0"));
        }
    }
    if (kind.startsWith(QLatin1String("TCPIP")) && parts.size() == kLanParts) {
        parts.insert(kLanParts - 1, QStringLiteral("INST0"));
    }
    return parts.join(kSeparator);
}

} // namespace

QString resourceIdentity(const QString& resource)
{
    const QString text = resource.section(QLatin1Char(';'), 0, 0).trimmed();
    const auto name = scn::visa::parseResourceName(text.toStdString());
    if (name && name->kind == scn::visa::ResourceName::Kind::Serial) {
        return serialIdentity(QString::fromStdString(name->device));
    }
    if (name && name->kind == scn::visa::ResourceName::Kind::Socket) {
        return QStringLiteral("TCPIP0::%1::%2::SOCKET")
            .arg(hostIdentity(QString::fromStdString(name->host)), QString::number(name->port));
    }
    return standardIdentity(text);
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
