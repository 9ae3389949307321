#pragma once

#include "storetool/console/exitcode.h"
#include "storetool/runs/runaccess.h"
#include "storetool/runs/runwatch.h"
#include "storetool/runs/storedrun.h"

#include <QCommandLineParser>
#include <QString>

#include <memory>
#include <optional>

namespace scnstore {

/// The run that a command works on, which may be opened. It lives longer than everything that has the
/// run's files open.
class OpenRun
{
public:
    explicit OpenRun(const StoredRun& run);

    const StoredRun& run() const { return m_run; }

    const RunWatch& watch() const { return m_watch; }

    /// After a read that failed: RunWatch's excuse for it, with a look whether the files are locked.
    std::optional<QString> excuse() const;

private:
    StoredRun m_run;
    RunWatch m_watch;
    SideFiles m_sideFiles;
};

/// Declares the argument RUN, to the parser and in its help.
void addRunArgument(QCommandLineParser& parser);

/// The run that the first positional argument names; null, after a sentence that begins with the
/// command's name, if there is none or if it must not be opened. `status` is then the exit code. A
/// refusal is also printed as JSON if the command was asked for that.
/// Ctrl+C no longer ends the program from here on: see catchInterrupts().
std::unique_ptr<OpenRun> openRun(const QString& command, const QCommandLineParser& parser,
                                 int& status);

/// Says why a run was not read, as JSON, too, if the command was asked for that. Returns the code.
int refuseRun(const QString& command, const QCommandLineParser& parser, const StoredRun& run,
              ExitCode code, const QString& why);

} // namespace scnstore
