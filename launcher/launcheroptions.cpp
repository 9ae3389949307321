#include "launcher/launcheroptions.h"

#include "launcher/place/programplace.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace scnlauncher {
namespace {

QCommandLineOption valued(const char* name, const char* description, const char* value)
{
    return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                              QString::fromLatin1(value));
}

/// What keeps a program from being started; empty if nothing does.
QString obstacle(const QString& program)
{
    const QFileInfo file(program);
    if (!file.exists()) {
        return program + QStringLiteral(" does not exist");
    }
    return file.isFile() && file.isExecutable() ? QString()
                                                : program + QStringLiteral(" cannot be run");
}

/// Why resources and options of the simulator do not go together; empty if they do.
QString contradiction(const QStringList& resources, const QStringList& ofTheSimulator)
{
    if (resources.size() > 1) {
        return QStringLiteral("one resource at a time: ") + resources.join(QLatin1Char(' '));
    }
    if (!resources.isEmpty() && !ofTheSimulator.isEmpty()) {
        return QStringLiteral("%1 is for a simulated instrument, without a resource")
            .arg(ofTheSimulator.join(QStringLiteral(", ")));
    }
    return {};
}

void checkPrograms(LauncherOptions& options)
{
    const QString program = obstacle(options.program);
    const QString simulator = options.isSimulated ? obstacle(options.simulator) : QString();
    if (!program.isEmpty()) {
        options.errorText = QStringLiteral("the program did not start: ") + program;
    } else if (!simulator.isEmpty()) {
        options.errorText = QStringLiteral("the simulator did not start: ") + simulator;
    }
}

} // namespace

LauncherOptions LauncherOptions::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Opens instruments, each with the SCN4070A control program in a tab. Starts "
                       "with a page that "
                       "lists what can be opened; with a RESOURCE or an option of the simulator, "
                       "opens that at once. A serial line opens at the rate in the environment "
                       "variable SCN4070A_SERIAL_RATE, without it at its last rate, at first at "
                       "57600 baud."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Displays help on commandline options."));
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption simulated(QStringLiteral("simulated"),
                                       QStringLiteral("Opens a simulated instrument."));
    QCommandLineOption program = valued("program", "Control program to start.", "path");
    program.setDefaultValue(companionProgram(QStringLiteral("scn4070a")));
    QCommandLineOption simulator = valued("simulator", "Simulator to start.", "path");
    simulator.setDefaultValue(companionProgram(QStringLiteral("scn4070a-sim")));
    const QList<QCommandLineOption> passedOn = {
        valued("transcript", "File for the simulator's transcript.", "path"),
        valued("slots", "Modules of the simulator, slot:type,...", "list"),
        valued("rate", "Readings per second of the simulator.", "number")};
    parser.addOptions({simulated, program, simulator});
    parser.addOptions(passedOn);
    parser.addPositionalArgument(QStringLiteral("RESOURCE"),
                                 QStringLiteral("VISA resource of the instrument."),
                                 QStringLiteral("[RESOURCE]"));
    LauncherOptions options;
    if (!parser.parse(arguments)) {
        options.errorText = parser.errorText();
        return options;
    }
    options.asksForHelp = parser.isSet(help);
    options.asksForVersion = parser.isSet(version);
    options.helpText = parser.helpText();
    options.program = parser.value(program);
    options.simulator = parser.value(simulator);
    options.resource = parser.positionalArguments().value(0);
    options.simulatorArguments << QStringLiteral("--tcp") << QStringLiteral("0");
    QStringList ofTheSimulator;
    for (const QCommandLineOption& option : passedOn) {
        if (parser.isSet(option)) {
            ofTheSimulator << QStringLiteral("--") + option.names().constFirst();
            options.simulatorArguments << ofTheSimulator.last() << parser.value(option);
        }
    }
    if (parser.isSet(simulated)) {
        ofTheSimulator << QStringLiteral("--simulated");
    }
    options.isSimulated =
        !ofTheSimulator.isEmpty() || (parser.isSet(simulator) && options.resource.isEmpty());
    options.errorText = contradiction(parser.positionalArguments(), ofTheSimulator);
    if (options.asksForHelp || options.asksForVersion) {
        options.errorText.clear();
    } else if (options.errorText.isEmpty()) {
        checkPrograms(options);
    }
    return options;
}

} // namespace scnlauncher
