#pragma once

#include "includetree.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

/// A library or a program as its CMake file declares it.
struct BuildTarget
{
    QString name;
    bool isLibrary = false;
    /// The link line, in its order.
    QStringList links;
};

/// The targets of the folders of a source tree, and which of its files belongs to which.
class BuildTree
{
public:
    /// Reads what the CMake files of the tree's folders say, in the order of the build.
    explicit BuildTree(const IncludeTree& files);

    /// From the first that CMake reads to the last.
    const QVector<BuildTarget>& targets() const { return m_targets; }

    const IncludeTree& files() const { return m_files; }

    /// Index of the target that a file belongs to, -1 for none: a source belongs to the target that
    /// lists it, a header to the library of its folder, or else to the program.
    int ownerOf(const QString& file) const { return m_owners.value(file, -1); }

    /// What the CMake files do that this reader does not follow.
    const QStringList& complaints() const { return m_complaints; }

private:
    void readCMakeFile(const QString& folder);
    void addTarget(const QString& command, const QStringList& words, const QString& folder);
    void own(const QString& folder, int index, const BuildTarget& target);
    void giveHeadersToTargets();

    const IncludeTree& m_files;
    QVector<BuildTarget> m_targets;
    QHash<QString, int> m_owners;
    QHash<QString, int> m_folderOwners;
    QStringList m_complaints;
};
