#pragma once

#include <QDateTime>

#include <cstdint>
#include <optional>

/// Sets the process's time zone, selected by any number: without and with summer time, with a
/// summer time that counts as standard time, with half an hour of it, with two hours of it.
void chooseZone(std::uint8_t number);

/// The first moment, in ms since the epoch, that the C library shows as this local time in the
/// process's zone; nothing if there is none, as in the hour skipped in spring.
std::optional<qint64> firstMomentOf(const QDate& date, const QTime& time);
