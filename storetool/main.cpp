#include "common/version.h"
#include "storetool/checkcommand.h"
#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/drawing/drawingapplication.h"
#include "storetool/exportcommand.h"
#include "storetool/forwardcommand.h"
#include "storetool/infocommand.h"
#include "storetool/listcommand.h"
#include "storetool/plotcommand.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <iterator>
#include <memory>

using namespace scnstore;

namespace {

/// The arguments of a command begin with its name.
struct Command
{
    const char* name;
    const char* summary;
    int (*run)(const QStringList& arguments);
    bool draws = false;
};

int showHelp(const QStringList& arguments);
int showVersion(const QStringList& arguments);

constexpr Command kCommands[] = {
    {"list", "Lists the runs on the disk.", runListCommand},
    {"info", "Describes a run.", runInfoCommand},
    {"check", "Checks a run, and says what is wrong with it.", runCheckCommand},
    {"export", "Writes a run as text.", runExportCommand},
    {"plot", "Draws a run.", runPlotCommand, true},
    {"forward", "Copies readings into a database while they are taken.", runForwardCommand},
    {"--help", "Shows this help and ends.", showHelp},
    {"--version", "Shows the version and ends.", showVersion},
};

constexpr int kNameColumn = 12;

int showHelp(const QStringList& /*arguments*/)
{
    QString text = QStringLiteral(
        "Usage: scn4070a-store COMMAND [arguments]\n"
        "Lists, checks, exports and draws the runs that the SCN4070A control program and its "
        "launcher keep.\n\n");
    for (const Command& command : kCommands) {
        text += QLatin1String("  ") + QString::fromLatin1(command.name).leftJustified(kNameColumn) +
                QString::fromLatin1(command.summary) + QLatin1Char('\n');
    }
    text += QStringLiteral("\n'scn4070a-store COMMAND --help' shows the arguments of a command.\n");
    return print(text) ? kFine : kFailed;
}

int showVersion(const QStringList& /*arguments*/)
{
    return print(QStringLiteral("scn4070a-store ") + scn::versionText() + QLatin1Char('\n'))
               ? kFine
               : kFailed;
}

/// Null for a name that no command has.
const Command* commandOf(QString name)
{
    if (name == QLatin1String("-h") || name == QLatin1String("help")) {
        name = QStringLiteral("--help");
    } else if (name == QLatin1String("-v")) {
        name = QStringLiteral("--version");
    }
    const auto* const command =
        std::find_if(std::begin(kCommands), std::end(kCommands), [&name](const Command& candidate) {
            return name == QLatin1String(candidate.name);
        });
    return command == std::end(kCommands) ? nullptr : command;
}

/// Only a command that draws takes the time to set up windows and fonts.
std::unique_ptr<QCoreApplication> applicationFor(const Command* command, int& argc, char* argv[])
{
    return command && command->draws ? makeDrawingApplication(argc, argv)
                                     : std::make_unique<QCoreApplication>(argc, argv);
}

} // namespace

int main(int argc, char* argv[])
{
    const QString name = argc > 1 ? QFile::decodeName(argv[1]) : QString();
    const Command* const command = commandOf(name);
    silenceLog();
    outliveClosedPipes();
    const auto application = applicationFor(command, argc, argv);
    if (name.isEmpty()) {
        return fail(kFailed, QStringLiteral("no command is given. See 'scn4070a-store --help'."));
    }
    if (!command) {
        return fail(
            kFailed,
            QStringLiteral("there is no command '%1'. See 'scn4070a-store --help'.").arg(name));
    }
    return command->run(QCoreApplication::arguments().mid(1));
}
