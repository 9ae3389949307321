#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace scnstore {

/// A text as the server takes it: UTF-8 without zeros, and short enough for an index. Any other is changed.
QByteArray storableText(const QByteArray& text);

/// Rows in the binary format of the server's COPY, which keeps every bit of a value.
class CopyBuffer
{
public:
    CopyBuffer();

    /// Starts a row of so many fields, which the put functions fill in order.
    void startRow(int fields);
    void putText(const QByteArray& utf8);
    void putInteger(qint64 value);
    void putDouble(double value);

    int size() const { return m_bytes.size(); }

    /// Drops what was put after the buffer had this size.
    void truncate(int size) { m_bytes.truncate(size); }

    /// The rows with the mark of their end.
    QByteArray whole() const;

private:
    template <typename Integer>
    void put(Integer value);

    QByteArray m_bytes;
};

} // namespace scnstore
