#include "common/version.h"
#include "storetool/checkcommand.h"
#include "storetool/console/console.h"
#include "storetool/exportcommand.h"
#include "storetool/forwardcommand.h"
#include "storetool/infocommand.h"
#include "storetool/listcommand.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

using namespace scnstore;

namespace {

/// The arguments of a command begin with its name.
struct Command
{
    const char* name;
    const char* summary;
    int (*run)(const QStringList& arguments);
};

int showHelp(const QStringList& arguments);
int showVersion(const QStringList& arguments);

constexpr Command kCommands[] = {
    {"list", "Lists the runs on the disk.", runListCommand},
    {"info", "Describes a run.", runInfoCommand},
    {"check", "Checks a run, and says what is wrong with it.", runCheckCommand},
    {"export", "Writes a run as text.", runExportCommand},
    {"forward", "Copies readings into a database while they are taken.", runForwardCommand},
    {"--help", "Shows this help and ends.", showHelp},
    {"--version", "Shows the version and ends.", showVersion},
};

constexpr int kNameColumn = 12;

int showHelp(const QStringList& /*arguments*/)
{
    QString text = QStringLiteral(
        "Usage: scn4070a-store COMMAND [arguments]\n"
        "Lists, checks and exports the runs that the SCN4070A control program and its "
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

QString commandName(const QStringList& arguments)
{
    const QString name = arguments.value(0);
    if (name == QLatin1String("-h") || name == QLatin1String("help")) {
        return QStringLiteral("--help");
    }
    return name == QLatin1String("-v") ? QStringLiteral("--version") : name;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        return fail(kFailed, QStringLiteral("no command is given. See 'scn4070a-store --help'."));
    }
    silenceLog();
    const QString name = commandName(arguments);
    const auto* const command =
        std::find_if(std::begin(kCommands), std::end(kCommands), [&name](const Command& candidate) {
            return name == QLatin1String(candidate.name);
        });
    if (command == std::end(kCommands)) {
        return fail(
            kFailed,
            QStringLiteral("there is no command '%1'. See 'scn4070a-store --help'.").arg(name));
    }
    return command->run(arguments);
}
