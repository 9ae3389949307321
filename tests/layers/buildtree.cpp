#include "buildtree.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

QString textOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return QString();
    }
    return QString::fromUtf8(file.readAll());
}

bool isHeader(const QString& file)
{
    return file.endsWith(QLatin1String(".h"));
}

QString folderOf(const QString& file)
{
    return QFileInfo(file).path();
}

QString inFolder(const QString& folder, const QString& file)
{
    return QDir::cleanPath(folder + QLatin1Char('/') + file);
}

} // namespace

BuildTree::BuildTree(const QString& root, const QStringList& folders)
    : m_root(root)
{
    // The files first: the CMake files then find the owner of each.
    for (const QString& folder : folders) {
        readFiles(folder);
    }
    for (const QString& folder : folders) {
        readCMakeFile(folder);
    }
    giveHeadersToTargets();
}

void BuildTree::readFiles(const QString& folder)
{
    const QDir root(m_root);
    QDirIterator walk(root.filePath(folder), {QStringLiteral("*.h"), QStringLiteral("*.cpp")},
                      QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString file = root.relativeFilePath(walk.next());
        m_owners.insert(file, -1);
        readIncludes(file);
    }
}

void BuildTree::readIncludes(const QString& file)
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

void BuildTree::readCMakeFile(const QString& folder)
{
    static const QRegularExpression comment(QStringLiteral("#[^\n]*"));
    static const QRegularExpression command(QStringLiteral(R"((\w+)\s*\(([^)]*)\))"));
    static const QRegularExpression blanks(QStringLiteral("\\s+"));

    const QString text = textOf(inFolder(m_root, folder + QStringLiteral("/CMakeLists.txt")));
    QRegularExpressionMatchIterator matches = command.globalMatch(QString(text).remove(comment));
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString name = match.captured(1);
        const QStringList words = match.captured(2).split(blanks, Qt::SkipEmptyParts);
        if (name == QLatin1String("add_subdirectory")) {
            readCMakeFile(inFolder(folder, words.value(0)));
        } else if (name == QLatin1String("scn_library") || name == QLatin1String("scn_program")) {
            addTarget(name, words, folder);
        } else if (name == QLatin1String("add_library") ||
                   name == QLatin1String("add_executable") ||
                   name == QLatin1String("target_sources") ||
                   name == QLatin1String("target_link_libraries")) {
            m_complaints.append(folder + QStringLiteral("/CMakeLists.txt calls ") + name +
                                QStringLiteral(": only scn_library and scn_program are followed"));
        }
    }
}

void BuildTree::addTarget(const QString& command, const QStringList& words, const QString& folder)
{
    BuildTarget target;
    target.name = words.value(0);
    target.isLibrary = command == QLatin1String("scn_library");
    const int index = m_targets.size();

    QString keyword;
    for (const QString& word : words.mid(1)) {
        if (word == QLatin1String("QT") || word == QLatin1String("OUTPUT") ||
            word == QLatin1String("SOURCES") || word == QLatin1String("LINK")) {
            keyword = word;
        } else if (keyword == QLatin1String("LINK")) {
            target.links.append(word);
        } else if (keyword == QLatin1String("SOURCES") && !word.startsWith(QLatin1Char('$'))) {
            const QString file = inFolder(folder, word);
            m_owners.insert(file, index);
            own(folderOf(file), index, target);
        }
    }
    m_targets.append(target);
}

void BuildTree::own(const QString& folder, int index, const BuildTarget& target)
{
    const int owner = m_folderOwners.value(folder, index);
    if (owner == index) {
        m_folderOwners.insert(folder, index);
    } else if (target.isLibrary && m_targets.at(owner).isLibrary) {
        m_complaints.append(folder + QStringLiteral(" has two libraries, ") +
                            m_targets.at(owner).name + QStringLiteral(" and ") + target.name);
    } else if (target.isLibrary) {
        m_folderOwners.insert(folder, index);
    }
}

void BuildTree::giveHeadersToTargets()
{
    for (auto owner = m_owners.begin(); owner != m_owners.end(); ++owner) {
        if (owner.value() < 0 && isHeader(owner.key())) {
            owner.value() = m_folderOwners.value(folderOf(owner.key()), -1);
        }
    }
}

QString BuildTree::included(const IncludeLine& include) const
{
    // A header is named from the folder that its own folder lies in, or beside the file.
    QString root = folderOf(include.file);
    while (true) {
        const QString file = inFolder(root, include.header);
        if (m_owners.contains(file)) {
            return file;
        }
        if (root == QLatin1String(".")) {
            return QString();
        }
        root = folderOf(root);
    }
}
