#pragma once

#include <QRect>
#include <QString>
#include <QStringList>

#include <initializer_list>

/// UTF-8 texts as a list, for comparisons.
inline QStringList texts(std::initializer_list<const char*> lines)
{
    QStringList list;
    for (const char* line : lines) {
        list.append(QString::fromUtf8(line));
    }
    return list;
}

/// A size and a place, for messages.
inline QString textOf(const QRect& place)
{
    return QStringLiteral("%1 x %2 at %3, %4")
        .arg(place.width())
        .arg(place.height())
        .arg(place.x())
        .arg(place.y());
}
