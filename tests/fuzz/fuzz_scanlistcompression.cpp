#include "channels/scanlist.h"
#include "check.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <limits>

namespace {

/// Bytes from this value on are large steps; a smaller byte is a step of byte / kStepShare + 1, so
/// mostly 1.
constexpr int kLargeStep = 240;
constexpr int kStepShare = 100;
constexpr qint64 kLargeStepLength = 100000007;

/// Ascending numbers: the first four bytes are the first number, each further byte a step.
QList<int> numbersFrom(const std::uint8_t* data, std::size_t size)
{
    QList<int> numbers;
    if (size < 4) {
        return numbers;
    }
    quint32 first = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        first = first << 8 | data[i];
    }
    qint64 number = static_cast<qint32>(first);
    numbers << static_cast<int>(number);
    for (std::size_t i = 4; i < size; ++i) {
        const int step = data[i];
        number +=
            step >= kLargeStep ? (step - kLargeStep + 1) * kLargeStepLength : step / kStepShare + 1;
        if (number > std::numeric_limits<int>::max()) {
            break;
        }
        numbers << static_cast<int>(number);
    }
    return numbers;
}

/// Reads a canonically written number and advances the cursor; ends the process if there is none.
qint64 takeNumber(const char*& cursor)
{
    const bool negative = *cursor == '-';
    cursor += negative ? 1 : 0;
    const char* const begin = cursor;
    qint64 magnitude = 0;
    for (; *cursor >= '0' && *cursor <= '9'; ++cursor) {
        magnitude = magnitude * 10 + (*cursor - '0');
    }
    const auto digits = cursor - begin;
    FUZZ_CHECK(digits > 0 && digits <= 10);
    FUZZ_CHECK(*begin != '0' || (digits == 1 && !negative));
    return negative ? -magnitude : magnitude;
}

/// The numbers a list stands for; ends the process if an entry is malformed.
QList<int> expanded(const QByteArray& list)
{
    QList<int> numbers;
    const char* cursor = list.constData();
    while (*cursor != '\0') {
        const qint64 first = takeNumber(cursor);
        qint64 last = first;
        if (*cursor == ':') {
            ++cursor;
            last = takeNumber(cursor);
            FUZZ_CHECK(last >= first + 2);
        }
        for (qint64 number = first; number <= last; ++number) {
            numbers.append(static_cast<int>(number));
        }
        const bool isSeparator = *cursor == ',' && cursor[1] != '\0';
        FUZZ_CHECK(isSeparator || *cursor == '\0');
        cursor += isSeparator ? 1 : 0;
    }
    return numbers;
}

/// Number of entries in the shortest list: three consecutive numbers make one entry, two make two,
/// one makes one.
int shortestEntryCount(const QList<int>& numbers)
{
    int entries = 0;
    for (int i = 0; i < numbers.size();) {
        int length = 1;
        while (i + length < numbers.size() &&
               qint64{numbers[i + length]} == qint64{numbers[i]} + length) {
            ++length;
        }
        entries += length == 2 ? 2 : 1;
        i += length;
    }
    return entries;
}

} // namespace

/// The bytes are an ascending list of numbers. Its text stands for these numbers and is the
/// shortest possible; without ranges, the decoder of replies reads it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QList<int> numbers = numbersFrom(data, size);
    const QString list = scn::compressScanList(numbers);
    FUZZ_CHECK(expanded(list.toLatin1()) == numbers);
    FUZZ_CHECK(list.isEmpty() == numbers.isEmpty());
    if (numbers.isEmpty()) {
        return 0;
    }
    FUZZ_CHECK(list.count(QLatin1Char(',')) + 1 == shortestEntryCount(numbers));
    if (!list.contains(QLatin1Char(':'))) {
        FUZZ_CHECK(scn::decodeScanListReply(QStringLiteral("(@%1)").arg(list)).channels == numbers);
    }
    return 0;
}
