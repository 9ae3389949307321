#pragma once

#include "visa/resourcename.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace scn::visa {

/// A USB instrument that the kernel's driver for test and measurement devices serves.
struct UsbInstrument
{
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string serialNumber;
    std::uint8_t usbInterface = 0;
    /// What the instrument calls itself; may be empty.
    std::string productName;
    std::filesystem::path deviceFile;
};

/// The USB instruments that are plugged in, by the number of their device files. `root` is the root of
/// the file system. An instrument without a serial number has no resource and is left out.
std::vector<UsbInstrument> usbInstruments(const std::filesystem::path& root = "/");

/// The instrument that a USB resource names. Serial numbers are compared like the rest of a resource,
/// in either case; the same case goes first.
std::optional<UsbInstrument> findUsbInstrument(const ResourceName& name,
                                               const std::filesystem::path& root = "/");

/// The resource of an instrument, in the standard's spelling.
std::string usbResource(const UsbInstrument& instrument);

} // namespace scn::visa
