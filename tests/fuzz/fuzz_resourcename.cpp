#include "check.h"
#include "visa/resourcename.h"

#include <QRegularExpression>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

using namespace scn::visa;

namespace {

using Kind = ResourceName::Kind;

QRegularExpression wholeText(const char* pattern)
{
    return QRegularExpression(
        QLatin1String("\\A(?:") + QLatin1String(pattern) + QLatin1String(")\\z"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
}

/// A number from 1 to the highest, with or without leading zeros.
int plainNumber(QString digits, int highest)
{
    while (digits.startsWith(QLatin1Char('0'))) {
        digits.remove(0, 1);
    }
    const int number = digits.size() > 9 ? 0 : digits.toInt();
    return number <= highest ? number : 0;
}

ResourceName serialName(const std::string& device)
{
    ResourceName name;
    name.kind = Kind::Serial;
    name.device = device;
    return name;
}

std::optional<ResourceName> plainSerialFile(const QString& text)
{
    static const QRegularExpression form = wholeText("ASRL(/.+?)(?:::INSTR)?");
    const QString path = form.match(text).captured(1);
    if (path.isEmpty() || path.contains(QLatin1String("::"))) {
        return std::nullopt;
    }
    return serialName(path.toLatin1().toStdString());
}

std::optional<ResourceName> plainSerialNumber(const QString& text)
{
    static const QRegularExpression form = wholeText("ASRL([0-9]+)(?:::INSTR)?");
    const int port = plainNumber(form.match(text).captured(1), 9999);
    if (port == 0) {
        return std::nullopt;
    }
    return serialName("/dev/ttyS" + std::to_string(port - 1));
}

std::optional<ResourceName> plainSocket(const QString& text)
{
    static const QRegularExpression form =
        wholeText("TCPIP[0-9]*::(?|\\[([0-9a-f:.]+)\\]|([^][: ]+))::([0-9]+)::SOCKET");
    const QRegularExpressionMatch match = form.match(text);
    const int port = plainNumber(match.captured(2), 65535);
    if (port == 0) {
        return std::nullopt;
    }
    ResourceName name;
    name.kind = Kind::Socket;
    name.host = match.captured(1).toLatin1().toStdString();
    name.port = static_cast<std::uint16_t>(port);
    return name;
}

/// A decimal number or a hexadecimal one behind "0x"; empty above the highest.
std::optional<uint> plainUsbNumber(const QString& text, uint highest)
{
    const bool isHex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    bool isNumber = false;
    const uint number = text.mid(isHex ? 2 : 0).toUInt(&isNumber, isHex ? 16 : 10);
    return isNumber && number <= highest ? std::optional(number) : std::nullopt;
}

std::optional<ResourceName> plainUsb(const QString& text)
{
    static const QRegularExpression form =
        wholeText("USB[0-9]*::(0x[0-9a-f]+|[0-9]+)::(0x[0-9a-f]+|[0-9]+)::(.+?)"
                  "(?:::(0x[0-9a-f]+|[0-9]+))?");
    static const QRegularExpression ending(QStringLiteral("::INSTR\\z"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = form.match(QString(text).remove(ending));
    const auto vendor = plainUsbNumber(match.captured(1), 0xFFFF);
    const auto product = plainUsbNumber(match.captured(2), 0xFFFF);
    const QString usbInterface = match.captured(4);
    const auto number =
        plainUsbNumber(usbInterface.isEmpty() ? QStringLiteral("0") : usbInterface, 0xFF);
    if (!vendor || !product || !number || match.captured(3).contains(QLatin1String("::"))) {
        return std::nullopt;
    }
    ResourceName name;
    name.kind = Kind::Usb;
    name.vendor = static_cast<std::uint16_t>(*vendor);
    name.product = static_cast<std::uint16_t>(*product);
    name.serialNumber = match.captured(3).toLatin1().toStdString();
    name.usbInterface = static_cast<std::uint8_t>(*number);
    return name;
}

/// A plain version of the parser, with regular expressions over Latin-1.
std::optional<ResourceName> plainResourceName(std::string_view bytes)
{
    const QString text = QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
    static const QRegularExpression control(QStringLiteral("[\\x00-\\x1F\\x7F]"));
    if (control.match(text).hasMatch()) {
        return std::nullopt;
    }
    for (const auto parse : {plainSerialFile, plainSerialNumber, plainSocket, plainUsb}) {
        if (const auto name = parse(text)) {
            return name;
        }
    }
    return std::nullopt;
}

std::string formatted(const ResourceName& name)
{
    if (name.kind == Kind::Serial) {
        return "ASRL" + name.device + "::INSTR";
    }
    if (name.kind == Kind::Usb) {
        return "USB0::" + std::to_string(name.vendor) + "::" + std::to_string(name.product) +
               "::" + name.serialNumber + "::" + std::to_string(name.usbInterface) + "::INSTR";
    }
    const bool isNumeric = name.host.find(':') != std::string::npos;
    return "TCPIP0::" + (isNumeric ? '[' + name.host + ']' : name.host) +
           "::" + std::to_string(name.port) + "::SOCKET";
}

auto allOf(const ResourceName& name)
{
    return std::tie(name.kind, name.device, name.host, name.port, name.vendor, name.product,
                    name.serialNumber, name.usbInterface);
}

bool same(const std::optional<ResourceName>& a, const std::optional<ResourceName>& b)
{
    return a.has_value() == b.has_value() && (!a || allOf(*a) == allOf(*b));
}

/// What callers that open the port or the connection rely on.
void checkUsable(const ResourceName& name)
{
    if (name.kind == Kind::Serial) {
        FUZZ_CHECK(name.device.size() > 1 && name.device.front() == '/');
        FUZZ_CHECK(name.host.empty() && name.port == 0);
    } else if (name.kind == Kind::Usb) {
        FUZZ_CHECK(name.device.empty() && name.host.empty() && !name.serialNumber.empty());
        FUZZ_CHECK(name.serialNumber.find("::") == std::string::npos);
    } else {
        FUZZ_CHECK(name.device.empty() && !name.host.empty() && name.port > 0);
        FUZZ_CHECK(name.host.find_first_of("[] ") == std::string::npos);
    }
    for (const char c : name.device + name.host + name.serialNumber) {
        FUZZ_CHECK(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F);
    }
}

} // namespace

/// The bytes are a resource string. What is accepted, written out again, parses to the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto name = parseResourceName(text);
    FUZZ_CHECK(same(name, plainResourceName(text)));
    if (name) {
        checkUsable(*name);
        FUZZ_CHECK(same(name, parseResourceName(formatted(*name))));
        FUZZ_CHECK(!parseResourceName(" " + std::string(text)));
    }
    return 0;
}
