#pragma once

#include "storage/samplecolumn.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <vector>

namespace scn {

/// A block of rows: one column per curve, with its samples in consecutive rows from the first. A
/// shorter column has ended.
struct SampleBlock
{
    std::vector<SampleColumn> columns;

    /// Number of rows: that of the longest column.
    std::size_t rows() const;
};

/// The text of CSV rows, collected in memory. Values are the bytes of QString::number(value, 'E',
/// 15), which the C++ library produces in a quarter of the time.
class CsvRows
{
public:
    /// @param separator stands between the fields of a row
    explicit CsvRows(const QString& separator);

    /// Appends one row of a block: the row number, the local time of the first curve's sample as
    /// "yyyy-MM-dd hh:mm:ss", the value of each curve. A curve that has ended leaves its field
    /// empty. False, with a log line, if memory runs out.
    bool writeCsvRow(qint64 rowNumber, const SampleBlock& block, std::size_t row);

    const QByteArray& text() const { return m_text; }

    /// Clears the text but keeps its memory.
    void clear() { m_text.resize(0); }

private:
    void appendRow(qint64 rowNumber, const SampleBlock& block, std::size_t row);
    char* appendTime(char* out, qint64 timestamp);

    QByteArray m_separator;
    QByteArray m_text;
    QByteArray m_minuteText;  ///< "yyyy-MM-dd hh:mm:" of the minute below.
    qint64 m_minuteStart = 0; ///< First millisecond of the last sample's local minute.
    bool m_minuteKnown = false;
};

} // namespace scn
