#include "channels/unittext.h"

namespace scn {

namespace {

/// A unit that the two spell differently.
struct UnitSpelling
{
    const char* screen;
    const char* wire;
};

constexpr UnitSpelling kSpellings[] = {{"°C", "#C"}, {"°F", "#F"}};

} // namespace

QString unitOnScreen(const QString& reply)
{
    QString unit = reply;
    unit.remove(QLatin1Char('"'));
    for (const UnitSpelling& spelling : kSpellings) {
        if (unit == QLatin1String(spelling.wire)) {
            return QString::fromUtf8(spelling.screen);
        }
    }
    return unit;
}

QString unitOnWire(const QString& unit)
{
    for (const UnitSpelling& spelling : kSpellings) {
        if (unit == QString::fromUtf8(spelling.screen)) {
            return QString::fromLatin1(spelling.wire);
        }
    }
    return unit;
}

} // namespace scn
