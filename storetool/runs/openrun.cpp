#include "storetool/runs/openrun.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/runs/runbounds.h"
#include "storetool/runs/runfinder.h"

namespace scnstore {

OpenRun::OpenRun(const StoredRun& run)
    : m_run(run)
    , m_watch(run)
    , m_sideFiles(run)
{
}

std::optional<QString> OpenRun::excuse() const
{
    BoundsFailure failure;
    const bool isReadable = boundsOf(m_run, failure).has_value();
    return m_watch.excuseFor(!isReadable && failure.metLock);
}

void addRunArgument(QCommandLineParser& parser)
{
    parser.addPositionalArgument(
        QStringLiteral("RUN"),
        QStringLiteral("Directory of the run, or <serial>/<start> of a kept one."));
}

int refuseRun(const QString& command, const QCommandLineParser& parser, const StoredRun& run,
              ExitCode code, const QString& why)
{
    if (parser.optionNames().contains(QStringLiteral("json"))) {
        printJson({{QStringLiteral("run"), run.directory}, {QStringLiteral("refused"), why}});
    }
    return fail(code, command + QStringLiteral(": ") + why);
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
    const auto refuse = [&](ExitCode code, const QString& why) {
        status = refuseRun(command, parser, *run, code, why);
        return nullptr;
    };
    if (const std::optional<QString> missing = missingRightOf(*run)) {
        return refuse(kFailed, *missing);
    }
    if (const std::optional<RunRefusal> refusal = refusalOf(*run)) {
        return refuse(refusal->isForNow ? kInUse : kDamaged, refusal->sentence);
    }
    catchInterrupts();
    return std::make_unique<OpenRun>(*run);
}

} // namespace scnstore
