#pragma once

#include <QMap>
#include <QString>

/// What an export is told: where it writes, what stands above its columns, and from when to when.
/// All of it is plain text work; any thread.

/// The text between two cells, by the row of the dialog's list: 1 a semicolon, 2 a tab, anything else
/// a comma.
QString exportSeparator(int row);

/// Path of the CSV file that the parts of an export take their names from: "<serial>_<name>.csv" in
/// the directory. The serial number is the third word of the identity, words being separated by
/// single blanks; an empty name gives "顺序对齐曲线数据". What no file name may hold becomes "_", so
/// that neither text leads out of the directory. An empty directory gives the bare file name.
QString exportFilePath(const QString& directory, const QString& identity, const QString& name);

/// Fields of the header block by their keys: the instrument's resource and the second to fourth
/// word of its identity, the texts of start and end as they are.
QMap<QString, QString> exportHeader(const QString& resourceName, const QString& identity,
                                    const QString& startText, const QString& endText);

/// First and last moment of an export, both included; ms since the epoch.
struct ExportRange
{
    qint64 start = 0;
    qint64 end = 0;
};

/// The range between the two texts of a run, local time, "yyyy MM dd hh mm ss". A text that names two
/// moments, in the hour that autumn repeats, means the first as a start and the second as an end.
/// With a text that is no such time the range is one of 1970, which holds no reading.
ExportRange exportRange(const QString& startText, const QString& endText);
