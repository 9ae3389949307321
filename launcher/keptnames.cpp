#include "launcher/keptnames.h"

#include "launcher/place/fileuse.h"

#include <QFile>

namespace scnlauncher {

QString pathIn(const QString& directory, const QString& name)
{
    return directory + QLatin1Char('/') + name;
}

bool isSameFile(const QString& one, const QString& other)
{
    const auto first = factsOf(one);
    const auto second = factsOf(other);
    return first && second && first->isSameFile(*second);
}

void record(KeptRun& run, const QString& name)
{
    const auto facts = factsOf(run.path(name));
    const QString number = facts ? QString::number(facts->number) : QString();
    if (run.files.value(name) != number) {
        run.files.insert(name, number);
        run.write();
    }
}

bool isOwn(const KeptRun& run, const QString& name)
{
    const auto facts = factsOf(run.path(name));
    return facts && run.files.value(name) == QString::number(facts->number);
}

void unlink(KeptRun& run, const QString& name)
{
    if (isOwn(run, name) && QFile::remove(run.path(name))) {
        run.files.remove(name);
        run.write();
    }
}

} // namespace scnlauncher
