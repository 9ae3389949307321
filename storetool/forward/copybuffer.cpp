#include "storetool/forward/copybuffer.h"

#include <QtEndian>

#include <cstring>

namespace scnstore {

namespace {

// The signature, no flags, and no extension of the header.
constexpr char kHeader[] = "PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0";
constexpr int kHeaderBytes = 19;
constexpr char kTrailer[] = "\377\377";
constexpr int kTrailerBytes = 2;

} // namespace

QByteArray storableText(const QByteArray& text)
{
    constexpr int kMostCharacters = 200;
    return QString::fromUtf8(text)
        .left(kMostCharacters)
        .replace(QChar::Null, QChar::ReplacementCharacter)
        .toUtf8();
}

CopyBuffer::CopyBuffer()
    : m_bytes(kHeader, kHeaderBytes)
{
}

template <typename Integer>
void CopyBuffer::put(Integer value)
{
    char bytes[sizeof(Integer)];
    qToBigEndian(value, bytes);
    m_bytes.append(bytes, sizeof(Integer));
}

void CopyBuffer::startRow(int fields)
{
    put(static_cast<qint16>(fields));
}

void CopyBuffer::putText(const QByteArray& utf8)
{
    put(static_cast<qint32>(utf8.size()));
    m_bytes.append(utf8);
}

void CopyBuffer::putInteger(qint64 value)
{
    put(static_cast<qint32>(sizeof(value)));
    put(value);
}

void CopyBuffer::putDouble(double value)
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    put(static_cast<qint32>(sizeof(bits)));
    put(bits);
}

QByteArray CopyBuffer::whole() const
{
    return m_bytes + QByteArray::fromRawData(kTrailer, kTrailerBytes);
}

} // namespace scnstore
