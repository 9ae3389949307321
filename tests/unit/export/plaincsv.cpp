#include "plaincsv.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace {

constexpr qint64 kSecondMs = 1000;
constexpr int kTextSize = 64;

} // namespace

QByteArray plainTime(qint64 timestamp)
{
    const auto seconds = static_cast<std::time_t>(timestamp / kSecondMs);
    std::tm local{};
    localtime_r(&seconds, &local);
    std::array<char, kTextSize> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text.data();
}

QByteArray plainValue(double value)
{
    std::array<char, kTextSize> text{};
    std::snprintf(text.data(), text.size(), "%.15E", value);
    return text.data();
}

QByteArray plainHeader(const QVector<PlainCurve>& curves, const QString& separator,
                       const QMap<QString, QString>& header)
{
    QString text = QString(QChar(QChar::ByteOrderMark));
    text += QStringLiteral("地址") + separator + header.value(QStringLiteral("address"));
    text += QStringLiteral("\n型号") + separator + header.value(QStringLiteral("instrumentModel"));
    text +=
        QStringLiteral("\n序列号：") + separator + header.value(QStringLiteral("instrumentNum"));
    text += QStringLiteral("\n开始时间") + separator + header.value(QStringLiteral("startTime"));
    text += QStringLiteral("\n结束时间") + separator + header.value(QStringLiteral("endTime"));
    text += QStringLiteral("\n编号") + separator + QStringLiteral("时间") + separator;
    for (const PlainCurve& curve : curves) {
        text += curve.name + separator;
    }
    return text.toUtf8() + '\n';
}

QVector<QByteArray> plainRows(const QVector<PlainCurve>& curves, const QString& separator)
{
    int count = 0;
    for (const PlainCurve& curve : curves) {
        count = std::max(count, curve.samples.size());
    }
    const QByteArray between = separator.toUtf8();
    QVector<QByteArray> rows;
    for (int row = 0; row < count; ++row) {
        QByteArray line = QByteArray::number(row + 1) + between;
        if (row < curves.first().samples.size()) {
            line += plainTime(static_cast<qint64>(curves.first().samples.at(row).x()));
        }
        for (const PlainCurve& curve : curves) {
            line += between;
            if (row < curve.samples.size()) {
                line += plainValue(curve.samples.at(row).y());
            }
        }
        rows.append(line + '\n');
    }
    return rows;
}

QVector<QByteArray> plainParts(const QVector<PlainCurve>& curves, const QString& separator,
                               const QMap<QString, QString>& header, int rowsPerPart)
{
    const QByteArray top = plainHeader(curves, separator, header);
    QVector<QByteArray> parts{top};
    int inPart = 0;
    const QVector<QByteArray> rows = plainRows(curves, separator);
    for (const QByteArray& row : rows) {
        parts.last() += row;
        if (++inPart < rowsPerPart) {
            continue;
        }
        parts.append(top); // a full part is always followed by another
        inPart = 0;
    }
    return parts;
}
