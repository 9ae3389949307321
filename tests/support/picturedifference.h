#pragma once

#include <QColor>
#include <QImage>

#include <algorithm>
#include <cstdlib>
#include <limits>

/// The largest difference of a colour or of the opacity of any pixel, for pictures whose smooth edges may
/// be rounded differently.
inline int largestDifference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size()) {
        return std::numeric_limits<int>::max();
    }
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb one = a.pixel(x, y);
            const QRgb other = b.pixel(x, y);
            largest = std::max(
                {largest, std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                 std::abs(qBlue(one) - qBlue(other)), std::abs(qAlpha(one) - qAlpha(other))});
        }
    }
    return largest;
}
