#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// The text of a file; empty if it cannot be read.
QString textOf(const QString& path);

QString folderOf(const QString& file);
QString inFolder(const QString& folder, const QString& file);

/// One call in a CMake file.
struct CMakeCall
{
    QString command;
    QStringList words;
};

/// The calls of the CMakeLists.txt at `path`, in their order.
QVector<CMakeCall> cmakeCalls(const QString& path);

/// What the CMakeLists.txt of `root` adds, in its order: what comes later may use what comes earlier.
QStringList topFolders(const QString& root);
