#include "acquisition/recorddecoder.h"
#include "check.h"
#include "plaindecoder.h"
#include "support/logcapture.h"
#include "timezones.h"

#include <cstddef>
#include <cstdint>

/// The first byte selects the time zone, the rest are the fields of a record in UTF-8, one per
/// line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    chooseZone(data[0]);
    const QStringList fields =
        QString::fromUtf8(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1))
            .split(QLatin1Char('\n'));
    const LogCapture log;
    const MeasurementData record = decodeRecord(fields);
    const QStringList warnings = log.lines(QtWarningMsg);
    FUZZ_CHECK(warnings.size() == log.lines().size());

    QStringList plainWarnings;
    checkSameRecord(record, plainRecord(fields, plainWarnings));
    FUZZ_CHECK(warnings == plainWarnings);
    FUZZ_CHECK(record.valid == warnings.isEmpty());
    return 0;
}
