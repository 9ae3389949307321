#include "storetool/runs/openrun.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/runfinder.h"

namespace scnstore {

OpenRun::OpenRun(const StoredRun& run)
    : m_run(run)
    , m_sideFiles(run)
{
}

void addRunArgument(QCommandLineParser& parser)
{
    parser.addPositionalArgument(
        QStringLiteral("RUN"),
        QStringLiteral("Directory of the run, or <serial>/<start> of a kept one."));
}

std::unique_ptr<OpenRun> openRun(const QString& command, const QCommandLineParser& parser,
                                 int& status)
{
    QString sentence;
    const std::optional<StoredRun> run = findRun(parser.positionalArguments().value(0), sentence);
    if (!run) {
        status = fail(kFailed, command + QStringLiteral(": ") + sentence);
        return nullptr;
    }
    if (const std::optional<QString> missing = missingRightOf(*run)) {
        status = fail(kFailed, command + QStringLiteral(": ") + *missing);
        return nullptr;
    }
    if (const std::optional<QString> refusal = refusalOf(*run)) {
        status = fail(kDamaged, command + QStringLiteral(": ") + *refusal);
        return nullptr;
    }
    catchInterrupts();
    return std::make_unique<OpenRun>(*run);
}

} // namespace scnstore
