#pragma once

#include "rawstore.h"

/// Prepares an insert of many points in one statement: each AUTOINCREMENT number costs a search of a
/// table that has a row for every table in the file. The caller finalizes it.
sqlite3_stmt* prepareRawInsert(RawStore& file, const QString& table);

/// Inserts `points` points of a curve, `stepMs` apart.
void insertRawPoints(sqlite3_stmt* insert, int curveId, int points, qint64 start, qint64 stepMs);

/// Makes a full day of `curves` curves. They take turns of ten minutes, so that a table's pages are
/// scattered over the file as a run leaves them.
void fillRawDay(const QString& path, qint64 midnight, int curves, qint64 stepMs);
