#pragma once

#include <QMap>
#include <QString>

/// The parameters of an export: where it writes, its header, and its time range. Plain text work;
/// any thread.

/// The separator by the row of the dialog's list: 1 a semicolon, 2 a tab, anything else a comma.
QString exportSeparator(int row);

/// Path that the part names derive from: "<serial>_<name>.csv" in the directory. The serial number
/// is the third word of the identity, words being separated by single blanks; an empty name gives
/// "顺序对齐曲线数据". Characters that no file name may hold become "_", so neither text leads out of the
/// directory. An empty directory gives the bare file name.
QString exportFilePath(const QString& directory, const QString& identity, const QString& name);

/// Header fields by key: the instrument's resource, the second to fourth word of its identity, and
/// the texts of start and end unchanged.
QMap<QString, QString> exportHeader(const QString& resourceName, const QString& identity,
                                    const QString& startText, const QString& endText);

namespace scn {

/// First and last moment of an export, both included, in ms since the epoch.
struct ExportRange
{
    qint64 start = 0;
    qint64 end = 0;
};

} // namespace scn

/// The range between the two texts of a run, local time, "yyyy MM dd hh mm ss". A text that names
/// two moments, in the hour that autumn repeats, means the first as a start and the second as an
/// end. A text that is not such a time gives a range in 1970, without readings.
scn::ExportRange exportRange(const QString& startText, const QString& endText);
