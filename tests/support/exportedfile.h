#pragma once

#include "support/readings.h"

#include <QString>
#include <QStringList>

/// The lines of an exported file, which starts with a byte order mark; none without one.
QStringList exportedLines(const QString& path);

/// The data lines that an export of the readings between two times has.
QStringList exportedRows(const Readings& readings, qint64 start, qint64 end);
