#pragma once

#include <QList>
#include <QString>

namespace scn {

/// Channel numbers as a scan list: runs of consecutive numbers, separated by commas. A run of three or
/// more is "first:last", a run of two "first,last". The numbers must ascend without repeats. An empty
/// list gives an empty text.
QString compressScanList(const QList<int>& sortedChannels);

/// The decoded reply to ROUT:SCAN?.
struct ScanListReply
{
    /// True if the reply is exactly the block of an empty list.
    bool isEmptyList = false;

    /// Channel numbers in the reply's order; an entry that is not a number reads as 0. Empty if
    /// isEmptyList; any other reply gives at least one entry.
    QList<int> channels;
};

/// Decodes a reply such as "#210(@101,102)". It lists single channel numbers, no ranges.
ScanListReply decodeScanListReply(const QString& reply);

} // namespace scn
