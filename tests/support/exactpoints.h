#pragma once

#include <QLocale>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QTest>
#include <QVector>

#include <algorithm>
#include <cmath>

/// Compares points and rectangles number by number. The operators of QPointF and QRectF take numbers
/// for equal that differ by a part in 1e12: almost two milliseconds of a time since the epoch.
#define COMPARE_EXACTLY(actual, expected)                                                          \
    do {                                                                                           \
        const QString scnDifference = exactpoints::difference(actual, expected);                   \
        QVERIFY2(scnDifference.isEmpty(), qPrintable(scnDifference));                              \
    } while (false)

namespace exactpoints {

/// Equal, or both not a number.
inline bool same(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

inline bool same(const QPointF& a, const QPointF& b)
{
    return same(a.x(), b.x()) && same(a.y(), b.y());
}

inline bool same(const QRectF& a, const QRectF& b)
{
    return same(a.topLeft(), b.topLeft()) && same(a.width(), b.width()) &&
           same(a.height(), b.height());
}

/// All digits of the numbers.
inline QString text(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

inline QString text(const QPointF& point)
{
    return QStringLiteral("(%1, %2)").arg(text(point.x()), text(point.y()));
}

inline QString text(const QRectF& area)
{
    return QStringLiteral("%1 of %2 x %3")
        .arg(text(area.topLeft()), text(area.width()), text(area.height()));
}

/// What differs, for a message; empty if nothing does.
template <typename Shape>
QString difference(const Shape& actual, const Shape& expected)
{
    return same(actual, expected)
               ? QString()
               : QStringLiteral("%1 in place of %2").arg(text(actual), text(expected));
}

inline QString difference(const QVector<QPointF>& actual, const QVector<QPointF>& expected)
{
    if (actual.size() != expected.size()) {
        return QStringLiteral("%1 points in place of %2").arg(actual.size()).arg(expected.size());
    }
    for (int i = 0; i < actual.size(); ++i) {
        if (!same(actual.at(i), expected.at(i))) {
            return QStringLiteral("point %1: %2")
                .arg(QString::number(i), difference(actual.at(i), expected.at(i)));
        }
    }
    return {};
}

} // namespace exactpoints

/// Whether two curves have the same points, number by number.
inline bool samePoints(const QVector<QPointF>& actual, const QVector<QPointF>& expected)
{
    return exactpoints::difference(actual, expected).isEmpty();
}

/// Whether one of the points is this one, number by number.
inline bool hasPoint(const QVector<QPointF>& points, const QPointF& point)
{
    return std::any_of(points.cbegin(), points.cend(),
                       [&point](const QPointF& other) { return exactpoints::same(other, point); });
}
