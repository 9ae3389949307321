#include "buildtree.h"

#include "sourcetext.h"

namespace {

bool isHeader(const QString& file)
{
    return file.endsWith(QLatin1String(".h"));
}

} // namespace

BuildTree::BuildTree(const IncludeTree& files)
    : m_files(files)
{
    // The files first: the CMake files then find the owner of each.
    for (const QString& file : files.files()) {
        m_owners.insert(file, -1);
    }
    for (const QString& folder : files.folders()) {
        readCMakeFile(folder);
    }
    giveHeadersToTargets();
}

void BuildTree::readCMakeFile(const QString& folder)
{
    const QString path = folder + QStringLiteral("/CMakeLists.txt");
    for (const CMakeCall& call : cmakeCalls(inFolder(m_files.root(), path))) {
        const QString& name = call.command;
        if (name == QLatin1String("add_subdirectory")) {
            readCMakeFile(inFolder(folder, call.words.value(0)));
        } else if (name == QLatin1String("scn_library") || name == QLatin1String("scn_program")) {
            addTarget(name, call.words, folder);
        } else if (name == QLatin1String("add_library") ||
                   name == QLatin1String("add_executable") ||
                   name == QLatin1String("target_sources") ||
                   name == QLatin1String("target_link_libraries")) {
            m_complaints.append(path + QStringLiteral(" calls ") + name +
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
