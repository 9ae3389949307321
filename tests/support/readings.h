#pragma once

#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

/// Readings by channel, each list in the order of time: ms since the epoch, and the value.
using Readings = QMap<int, QVector<QPair<qint64, double>>>;

/// The readings in the replies that an instrument has sent, decoded apart from the program: nine
/// fields a record behind a definite-length block header.
Readings readingsInReplies(const QStringList& sentLines);

/// What can be stored of the replies: the whole and sound records. A reply that does not fit into the
/// program's buffer is left out.
Readings storableReadings(const QStringList& sentLines);

/// The readings in the day files of a directory, read with the sqlite3 program.
Readings readingsInStore(const QString& directory);

/// What two sets of readings do not share, for the report of a failure; empty if they are equal.
QString difference(const Readings& readings, const Readings& wanted);

int countOf(const Readings& readings);

/// How many readings are missing between the first and the last of each channel, whose readings are
/// that far apart.
int missingIn(const Readings& readings, double distanceMs);

/// The first place where a channel's readings are further apart than 1.5 times their distance, for the
/// report of a failure; empty if none is missing.
QString gapIn(const Readings& readings, double distanceMs);

/// What the sqlite3 program prints for a statement on a file, a line a row.
QStringList runSqlite(const QString& file, const QString& statement);
