#pragma once

#include "teststore.h"

#include <QString>
#include <QStringList>

#include <initializer_list>

/// A reading and the current time at which it arrives. Both are written with their offset from UTC,
/// as "2026-01-12T23:59:59.999+01:00", so that a test means the same in every zone.
struct Reading
{
    const char* present;
    const char* time;
    int curveId;
    double value;
};

QString text(const char* utf8);

/// Milliseconds since the epoch of a time written as above. The test ends if it is malformed.
qint64 instant(const char* time);

/// Registers a curve already known to today's and the named day files, without the pause for a new
/// name.
int enlist(TestStore& store, const char* name, std::initializer_list<const char*> dateKeys = {});

/// Sets the present and appends, reading by reading.
void play(TestStore& store, std::initializer_list<Reading> readings);

/// Every row of every table of every day file: the file's name, then each table's name followed by
/// its rows. Files and tables by name, rows by id, columns joined by "|".
QStringList allRows(const QString& directory);

/// The lines of a text, trimmed, without the empty ones.
QStringList lines(const char* utf8);
