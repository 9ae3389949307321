#include "layerrules.h"

#include "sourcetext.h"

#include <QFileInfo>
#include <QHash>
#include <QLibraryInfo>
#include <QMap>
#include <QSet>

#include <set>

namespace layerrules {
namespace {

/// Target -> library that its files include -> the first file that does.
using Needs = QMap<int, QMap<QString, QString>>;

/// Libraries that a library brings along: naming those, too, would say the same thing twice.
QStringList broughtAlong(const QString& library)
{
    static const QMap<QString, QStringList> brought{
        {QStringLiteral("Qt5::Gui"), {QStringLiteral("Qt5::Core")}},
        {QStringLiteral("Qt5::Network"), {QStringLiteral("Qt5::Core")}},
        {QStringLiteral("Qt5::Sql"), {QStringLiteral("Qt5::Core")}},
        {QStringLiteral("Qt5::Widgets"), {QStringLiteral("Qt5::Core"), QStringLiteral("Qt5::Gui")}},
        {QStringLiteral("Qwt::Qwt"),
         {QStringLiteral("Qt5::Core"), QStringLiteral("Qt5::Gui"), QStringLiteral("Qt5::Widgets")}},
    };
    return brought.value(library);
}

/// The library of another maker's header; empty for the language's own.
QString outsideLibrary(const QString& header)
{
    static const QMap<QString, QString> others{
        {QStringLiteral("CLI/CLI.hpp"), QStringLiteral("CLI11::CLI11")},
        {QStringLiteral("libpq-fe.h"), QStringLiteral("PostgreSQL::PostgreSQL")},
        {QStringLiteral("sqlite3.h"), QStringLiteral("SQLite::SQLite3")},
        {QStringLiteral("thread"), QStringLiteral("Threads::Threads")},
        {QStringLiteral("xcb/xcb.h"), QStringLiteral("xcb")},
    };
    if (header.startsWith(QLatin1String("qwt"))) {
        return QStringLiteral("Qwt::Qwt");
    }
    if (header.startsWith(QLatin1Char('Q'))) {
        static const QString qtHeaders = QLibraryInfo::location(QLibraryInfo::HeadersPath);
        for (const QString& module :
             {QStringLiteral("Core"), QStringLiteral("Gui"), QStringLiteral("Widgets"),
              QStringLiteral("Sql"), QStringLiteral("Network"), QStringLiteral("Svg")}) {
            if (QFileInfo::exists(qtHeaders + QStringLiteral("/Qt%1/%2").arg(module, header))) {
                return QStringLiteral("Qt5::") + module;
            }
        }
        return QStringLiteral("a module of Qt with ") + header;
    }
    return others.value(header);
}

/// The library that an #include asks for; empty when it is the target's own or the language's.
QString askedFor(const BuildTree& tree, const IncludeLine& include)
{
    if (!include.isQuoted) {
        return outsideLibrary(include.header);
    }
    const int other = tree.ownerOf(tree.files().included(include));
    return other < 0 || other == tree.ownerOf(include.file) ? QString()
                                                            : tree.targets().at(other).name;
}

Needs needsOf(const BuildTree& tree)
{
    Needs needs;
    for (const IncludeLine& include : tree.files().includes()) {
        const QString library = askedFor(tree, include);
        const int target = tree.ownerOf(include.file);
        if (target >= 0 && !library.isEmpty() && !needs[target].contains(library)) {
            needs[target].insert(library, include.file);
        }
    }
    for (QMap<QString, QString>& libraries : needs) {
        for (const QString& library : libraries.keys()) {
            for (const QString& brought : broughtAlong(library)) {
                libraries.remove(brought);
            }
        }
    }
    return needs;
}

/// What includes what, by the name that each file counts under.
using Neighbours = QMap<QString, std::set<QString>>;

/// The file without its ending, and without what follows an underscore if a header has the name before it.
QString classOf(const QString& file, const QSet<QString>& files)
{
    const QString name = file.section(QLatin1Char('.'), 0, -2);
    const QString before =
        inFolder(folderOf(name), QFileInfo(name).fileName().section(QLatin1Char('_'), 0, 0));
    return files.contains(before + QStringLiteral(".h")) ? before : name;
}

/// `names` has the name of each file.
Neighbours neighboursBy(const IncludeTree& tree, const QHash<QString, QString>& names)
{
    Neighbours neighbours;
    for (const IncludeLine& include : tree.includes()) {
        const QString from = names.value(include.file);
        const QString to = include.isQuoted ? names.value(tree.included(include)) : QString();
        if (!to.isEmpty() && to != from) {
            neighbours[from].insert(to);
        }
    }
    return neighbours;
}

/// The way from `start` back to where `way` begins, by names that are not in `done`; empty for none.
QStringList circleFrom(const Neighbours& neighbours, const QString& start, QStringList way,
                       QSet<QString>* done)
{
    if (way.contains(start)) {
        return way.mid(way.indexOf(start)) << start;
    }
    if (done->contains(start)) {
        return QStringList();
    }
    way.append(start);
    for (const QString& next : neighbours.value(start)) {
        const QStringList circle = circleFrom(neighbours, next, way, done);
        if (!circle.isEmpty()) {
            return circle;
        }
    }
    done->insert(start);
    return QStringList();
}

/// The first circle, as one sentence.
QStringList circleIn(const Neighbours& neighbours)
{
    QSet<QString> done;
    for (const QString& start : neighbours.keys()) {
        const QStringList circle = circleFrom(neighbours, start, {}, &done);
        if (!circle.isEmpty()) {
            return {circle.join(QStringLiteral(" -> "))};
        }
    }
    return QStringList();
}

} // namespace

QStringList strayFiles(const BuildTree& tree)
{
    QStringList breaches = tree.complaints();
    for (const QString& file : tree.files().files()) {
        if (tree.ownerOf(file) < 0) {
            breaches.append(file + QStringLiteral(" belongs to no library and no program"));
        }
    }
    return breaches;
}

QStringList missingLinks(const BuildTree& tree)
{
    QStringList breaches;
    const Needs needs = needsOf(tree);
    for (auto target = needs.begin(); target != needs.end(); ++target) {
        const BuildTarget& named = tree.targets().at(target.key());
        for (auto library = target->begin(); library != target->end(); ++library) {
            if (!named.links.contains(library.key())) {
                breaches.append(named.name + QStringLiteral(" does not link ") + library.key() +
                                QStringLiteral(", which ") + library.value() +
                                QStringLiteral(" includes"));
            }
        }
    }
    return breaches;
}

QStringList needlessLinks(const BuildTree& tree)
{
    QStringList breaches;
    const Needs needs = needsOf(tree);
    for (int i = 0; i < tree.targets().size(); ++i) {
        const BuildTarget& target = tree.targets().at(i);
        for (const QString& library : target.links) {
            if (!needs.value(i).contains(library)) {
                breaches.append(target.name + QStringLiteral(" links ") + library +
                                QStringLiteral(", which none of its files needs"));
            }
        }
    }
    return breaches;
}

QStringList upwardLinks(const BuildTree& tree)
{
    QStringList breaches;
    QSet<QString> above;
    for (const BuildTarget& target : tree.targets()) {
        above.insert(target.name);
    }
    for (const BuildTarget& target : tree.targets()) {
        for (const QString& library : target.links) {
            if (above.contains(library)) {
                breaches.append(target.name + QStringLiteral(" links upwards to ") + library);
            }
        }
        above.remove(target.name);
    }
    return breaches;
}

QStringList missingHeaders(const IncludeTree& tree)
{
    QStringList breaches;
    for (const IncludeLine& include : tree.includes()) {
        if (include.isQuoted && tree.included(include).isEmpty() &&
            !include.header.endsWith(QLatin1String(".moc"))) {
            breaches.append(include.file + QStringLiteral(" includes what is not there: ") +
                            include.header);
        }
    }
    return breaches;
}

QStringList upwardIncludes(const IncludeTree& tree, const QStringList& order)
{
    const auto place = [&order](const QString& file) {
        return order.indexOf(file.section(QLatin1Char('/'), 0, 0));
    };
    QStringList breaches;
    for (const IncludeLine& include : tree.includes()) {
        const QString file = include.isQuoted ? tree.included(include) : QString();
        if (!file.isEmpty() && place(file) > place(include.file)) {
            breaches.append(include.file + QStringLiteral(" includes upwards ") + file);
        }
    }
    return breaches;
}

QStringList folderCircles(const IncludeTree& tree)
{
    QHash<QString, QString> names;
    for (const QString& file : tree.files()) {
        names.insert(file, folderOf(file));
    }
    return circleIn(neighboursBy(tree, names));
}

QStringList fileCircles(const IncludeTree& tree)
{
    const QSet<QString> files(tree.files().cbegin(), tree.files().cend());
    QHash<QString, QString> names;
    for (const QString& file : tree.files()) {
        names.insert(file, classOf(file, files));
    }
    return circleIn(neighboursBy(tree, names));
}

} // namespace layerrules
