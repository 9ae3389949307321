#include "includetree.h"

#include "sourcetext.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>

IncludeTree::IncludeTree(const QString& root, const QStringList& folders)
    : m_root(root)
    , m_folders(folders)
{
    const QDir top(root);
    for (const QString& folder : folders) {
        QDirIterator walk(top.filePath(folder), {QStringLiteral("*.h"), QStringLiteral("*.cpp")},
                          QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            m_files.append(top.relativeFilePath(walk.next()));
        }
    }
    m_files.sort();
    m_fileSet = QSet<QString>(m_files.cbegin(), m_files.cend());
    for (const QString& file : qAsConst(m_files)) {
        readIncludes(file);
    }
}

void IncludeTree::readIncludes(const QString& file)
{
    static const QRegularExpression line(
        QStringLiteral(R"(^[ \t]*#[ \t]*include[ \t]*([<"])([^>"\n]+)[>"])"),
        QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator matches = line.globalMatch(textOf(inFolder(m_root, file)));
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        m_includes.append({file, match.captured(2), match.captured(1) == QLatin1String("\"")});
    }
}

QString IncludeTree::included(const IncludeLine& include) const
{
    // A header is named from the folder that its own folder lies in, or beside the file.
    QString root = folderOf(include.file);
    while (true) {
        const QString file = inFolder(root, include.header);
        if (m_fileSet.contains(file)) {
            return file;
        }
        if (root == QLatin1String(".")) {
            return withEnding(QLatin1Char('/') + include.header);
        }
        root = folderOf(root);
    }
}

QString IncludeTree::withEnding(const QString& ending) const
{
    QString found;
    for (const QString& file : m_files) {
        if (file.endsWith(ending)) {
            if (!found.isEmpty()) {
                return QString();
            }
            found = file;
        }
    }
    return found;
}
