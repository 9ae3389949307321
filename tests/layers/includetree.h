#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

/// One #include line.
struct IncludeLine
{
    /// The file that includes.
    QString file;

    /// What stands between the quotes or angle brackets.
    QString header;

    bool isQuoted = false;
};

/// The headers and sources of some folders of a source tree, and their #include lines. All paths are relative
/// to the tree's root.
class IncludeTree
{
public:
    IncludeTree(const QString& root, const QStringList& folders);

    const QString& root() const { return m_root; }

    /// The folders as they were given.
    const QStringList& folders() const { return m_folders; }

    /// All headers and sources, sorted.
    const QStringList& files() const { return m_files; }

    const QVector<IncludeLine>& includes() const { return m_includes; }

    /// The file of the tree that a quoted #include means; empty if there is none, or more than one.
    QString included(const IncludeLine& include) const;

private:
    void readIncludes(const QString& file);
    QString withEnding(const QString& ending) const;

    const QString m_root;
    const QStringList m_folders;
    QStringList m_files;
    QSet<QString> m_fileSet;
    QVector<IncludeLine> m_includes;
};
