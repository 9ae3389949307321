#pragma once

#include "teststore.h"

#include <QString>
#include <QStringList>

#include <initializer_list>

/// A reading of a curve and the present time at which it comes in. Both times are written with their
/// distance from UTC, as "2026-01-12T23:59:59.999+01:00", so that a test says the same in every zone.
struct Reading
{
    const char* present;
    const char* time;
    int curveId;
    double value;
};

QString text(const char* utf8);

/// Milliseconds since the epoch of a time written as above. The test ends if it is no such.
qint64 instant(const char* time);

/// Registers a curve that the day files named by their keys, and today's, know already: it costs no
/// pause there, as a new name does.
int enlist(TestStore& store, const char* name, std::initializer_list<const char*> dateKeys = {});

/// Sets the present and appends, reading by reading.
void play(TestStore& store, std::initializer_list<Reading> readings);

/// Every row of every table of every day file: the file's name, then each table's name followed by
/// its rows. Files and tables by name, rows by id, columns joined by "|".
QStringList allRows(const QString& directory);

/// The lines of a text, trimmed, without the empty ones.
QStringList lines(const char* utf8);
