#include "visa/usbinstrument_posix.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <system_error>

namespace scn::visa {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFilePrefix = "usbtmc";

/// One line of a device's folder in /sys; empty if it is not there.
std::string fact(const fs::path& folder, const char* name)
{
    std::ifstream file(folder / name);
    std::string line;
    std::getline(file, line);
    return line;
}

/// The kernel writes these numbers in hexadecimal digits alone.
template <typename Number>
bool readNumber(const fs::path& folder, const char* name, Number& number)
{
    const std::string text = fact(folder, name);
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, 16);
    return result.ec == std::errc() && result.ptr == end;
}

/// The instrument behind an entry of /sys/class/usbmisc.
std::optional<UsbInstrument> instrumentOf(const fs::path& entry, const fs::path& root)
{
    // "device" is the interface; the folder above it is the instrument.
    std::error_code error;
    const fs::path interfaceFolder = fs::canonical(entry / "device", error);
    if (error) {
        return std::nullopt;
    }
    const fs::path folder = interfaceFolder.parent_path();
    UsbInstrument found;
    found.serialNumber = fact(folder, "serial");
    found.productName = fact(folder, "product");
    found.deviceFile = root / "dev" / entry.filename();
    const bool isWhole = readNumber(folder, "idVendor", found.vendor) &&
                         readNumber(folder, "idProduct", found.product) &&
                         readNumber(interfaceFolder, "bInterfaceNumber", found.usbInterface) &&
                         !found.serialNumber.empty();
    return isWhole ? std::optional(found) : std::nullopt;
}

/// Orders "usbtmc9" before "usbtmc10".
bool isBefore(const fs::path& one, const fs::path& other)
{
    const std::string a = one.filename();
    const std::string b = other.filename();
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

} // namespace

std::vector<UsbInstrument> usbInstruments(const fs::path& root)
{
    std::vector<fs::path> entries;
    std::error_code error;
    const fs::path devices = root / "sys/class/usbmisc";
    for (fs::directory_iterator it(devices, error), end; !error && it != end; it.increment(error)) {
        if (it->path().filename().string().compare(0, kFilePrefix.size(), kFilePrefix) == 0) {
            entries.push_back(it->path());
        }
    }
    std::sort(entries.begin(), entries.end(), isBefore);
    std::vector<UsbInstrument> found;
    for (const fs::path& entry : entries) {
        if (const auto instrument = instrumentOf(entry, root)) {
            found.push_back(*instrument);
        }
    }
    return found;
}

std::optional<UsbInstrument> findUsbInstrument(const ResourceName& name, const fs::path& root)
{
    std::optional<UsbInstrument> inOtherCase;
    for (const UsbInstrument& instrument : usbInstruments(root)) {
        if (instrument.vendor != name.vendor || instrument.product != name.product ||
            instrument.usbInterface != name.usbInterface) {
            continue;
        }
        if (instrument.serialNumber == name.serialNumber) {
            return instrument;
        }
        if (!inOtherCase &&
            ::strcasecmp(instrument.serialNumber.c_str(), name.serialNumber.c_str()) == 0) {
            inOtherCase = instrument;
        }
    }
    return inOtherCase;
}

std::string usbResource(const UsbInstrument& instrument)
{
    char ids[32];
    std::snprintf(ids, sizeof ids, "USB0::0x%04X::0x%04X::", instrument.vendor, instrument.product);
    const std::string number = instrument.usbInterface == 0
                                   ? std::string()
                                   : "::" + std::to_string(instrument.usbInterface);
    return ids + instrument.serialNumber + number + "::INSTR";
}

} // namespace scn::visa
