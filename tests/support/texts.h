#pragma once

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
