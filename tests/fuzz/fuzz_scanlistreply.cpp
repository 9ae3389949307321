#include "channels/scanlist.h"
#include "check.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>

namespace {

/// The text between the first and second at-sign, from the parts of a plain split.
QString plainList(QString reply)
{
    reply.replace(QLatin1Char('('), QString())
        .replace(QLatin1Char(')'), QString())
        .replace(QLatin1Char('#'), QString());
    const QStringList parts = reply.split(QLatin1Char('@'), Qt::KeepEmptyParts);
    return parts.value(1);
}

} // namespace

/// The bytes are a reply in UTF-8. What is decoded, written as a plain list, decodes to the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString reply =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const scn::ScanListReply decoded = scn::decodeScanListReply(reply);
    FUZZ_CHECK(decoded.isEmptyList == (reply == QLatin1String("#13(@)")));
    FUZZ_CHECK(decoded.isEmptyList == decoded.channels.isEmpty());
    if (decoded.isEmptyList) {
        return 0;
    }

    const QStringList entries = plainList(reply).split(QLatin1Char(','));
    FUZZ_CHECK(decoded.channels.size() == entries.size());
    QStringList numbers;
    for (int i = 0; i < entries.size(); ++i) {
        bool isNumber = false;
        const int number = entries[i].toInt(&isNumber);
        FUZZ_CHECK(decoded.channels[i] == (isNumber ? number : 0));
        numbers << QString::number(decoded.channels[i]);
    }
    const QString written =
        QStringLiteral("#10(@") + numbers.join(QLatin1Char(',')) + QLatin1Char(')');
    const scn::ScanListReply again = scn::decodeScanListReply(written);
    FUZZ_CHECK(!again.isEmptyList && again.channels == decoded.channels);
    return 0;
}
