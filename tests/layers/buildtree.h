#pragma once

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

/// One #include line.
struct IncludeLine
{
    /// The file that includes.
    QString file;

    /// What stands between the quotes or angle brackets.
    QString header;

    bool isQuoted = false;
};

/// The targets of some folders of a source tree, and the #include lines of their files. All paths
/// are relative to the tree's root.
class BuildTree
{
public:
    /// Reads `folders` and what their CMake files add, in the order of the build.
    BuildTree(const QString& root, const QStringList& folders);

    /// From the first that CMake reads to the last.
    const QVector<BuildTarget>& targets() const { return m_targets; }

    const QVector<IncludeLine>& includes() const { return m_includes; }

    /// All headers and sources.
    QStringList files() const { return m_owners.keys(); }

    /// Index of the target that a file belongs to, -1 for none: a source belongs to the target that
    /// lists it, a header to the library of its folder, or else to the program.
    int ownerOf(const QString& file) const { return m_owners.value(file, -1); }

    /// The file of the tree that a quoted #include means; empty when there is none.
    QString included(const IncludeLine& include) const;

    /// What the CMake files do that this reader does not follow.
    const QStringList& complaints() const { return m_complaints; }

private:
    void readCMakeFile(const QString& folder);
    void addTarget(const QString& command, const QStringList& words, const QString& folder);
    void own(const QString& folder, int index, const BuildTarget& target);
    void readFiles(const QString& folder);
    void readIncludes(const QString& file);
    void giveHeadersToTargets();

    const QString m_root;
    QVector<BuildTarget> m_targets;
    QVector<IncludeLine> m_includes;
    QHash<QString, int> m_owners;
    QHash<QString, int> m_folderOwners;
    QStringList m_complaints;
};
