#pragma once

#include <QDateTime>

#include <cstdint>
#include <optional>

/// Gives the process one of a few time zones, by any number: without and with summer time, with a
/// summer time that counts as the usual one, with half an hour of it, and with two hours of it.
void chooseZone(std::uint8_t number);

/// The first moment, in ms since the epoch, that the C library shows as this local time of the
/// process's zone; nothing where it shows none, which is in the hour that is left out in spring.
std::optional<qint64> firstMomentOf(const QDate& date, const QTime& time);
