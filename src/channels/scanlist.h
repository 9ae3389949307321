#pragma once

#include <QList>
#include <QString>

/// Writes channel numbers as a scan list: runs of consecutive numbers joined by commas. A run of three
/// or more is "first:last", a run of two "first,last". The numbers must be ascending without repeats.
/// An empty list gives an empty text.
QString compressScanList(const QList<int>& sortedChannels);

/// The instrument's reply to ROUT:SCAN?, decoded.
struct ScanListReply
{
    /// The reply is exactly the block of an empty list.
    bool isEmptyList = false;

    /// Channel numbers in the reply's order; an entry that is no number reads as 0. Nothing when
    /// isEmptyList. Any other reply gives at least one entry.
    QList<int> channels;
};

/// Decodes a reply such as "#210(@101,102)". The list holds plain channel numbers, no ranges.
ScanListReply decodeScanListReply(const QString& reply);
