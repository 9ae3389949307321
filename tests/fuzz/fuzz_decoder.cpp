#include "acquisition/recorddecoder.h"
#include "check.h"
#include "plaindecoder.h"
#include "support/logcapture.h"
#include "timezones.h"

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
    const LogCapture log;
    const QList<MeasurementData> batch = decodeResponse(reply);
    const QStringList warnings = log.lines(QtWarningMsg);
    FUZZ_CHECK(warnings.size() == log.lines().size());

    QStringList plainWarnings;
    const QList<MeasurementData> plain = plainBatch(reply, plainWarnings);
    FUZZ_CHECK(batch.size() <= (reply.count(QLatin1Char(',')) + 1) / kRecordFieldCount);
    FUZZ_CHECK(batch.size() == plain.size());
    for (int i = 0; i < batch.size(); ++i) {
        FUZZ_CHECK(batch[i].valid);
        checkSameRecord(batch[i], plain[i]);
    }
    FUZZ_CHECK(warnings == plainWarnings);
    FUZZ_CHECK(log.lines(QtWarningMsg) == warnings);
    return 0;
}
