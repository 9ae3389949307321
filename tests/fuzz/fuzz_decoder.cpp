#include "acquisition/recorddecoder.h"
#include "check.h"
#include "plaindecoder.h"
#include "timezones.h"
#include "warninglog.h"

#include <cstddef>
#include <cstdint>

/// The first byte selects the time zone, the rest is a reply in UTF-8.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    chooseZone(data[0]);
    const QString reply =
        QString::fromUtf8(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    beginWarningLog();
    const QList<MeasurementData> batch = decodeResponse(reply);
    const QStringList warnings = warningLog();

    QStringList plainWarnings;
    const QList<MeasurementData> plain = plainBatch(reply, plainWarnings);
    FUZZ_CHECK(batch.size() <= (reply.count(QLatin1Char(',')) + 1) / kRecordFieldCount);
    FUZZ_CHECK(batch.size() == plain.size());
    for (int i = 0; i < batch.size(); ++i) {
        FUZZ_CHECK(batch[i].valid);
        checkSameRecord(batch[i], plain[i]);
    }
    FUZZ_CHECK(warnings == plainWarnings);
    FUZZ_CHECK(warningLog() == warnings);
    return 0;
}
