#include "common/version.h"
#include "launcher/childclaim.h"
#include "launcher/instrumentchild.h"
#include "launcher/launcherwindow.h"
#include "launcher/programplace.h"
#include "launcher/quitsignals.h"
#include "launcher/simulatorprocess.h"
#include "resources/windowicon.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <memory>

using namespace scnlauncher;

namespace {

constexpr int kWidth = 1500;
constexpr int kHeight = 900;

struct LauncherOptions
{
    QString program;
    QString simulator;
    QStringList simulatorArguments;
    QString resource;
};

LauncherOptions parseOptions(const QApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Starts the SCN4070A control program as an embedded child, on the instrument at RESOURCE "
        "or, without one, on a simulated instrument."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption program(
        QStringLiteral("program"), QStringLiteral("Control program to start."),
        QStringLiteral("path"), companionProgram(QStringLiteral("scn4070a")));
    const QCommandLineOption simulator(
        QStringLiteral("simulator"), QStringLiteral("Simulator to start without a RESOURCE."),
        QStringLiteral("path"), companionProgram(QStringLiteral("scn4070a-sim")));
    const QCommandLineOption transcript(QStringLiteral("transcript"),
                                        QStringLiteral("File for the simulator's transcript."),
                                        QStringLiteral("path"));
    const QCommandLineOption slotModules(QStringLiteral("slots"),
                                         QStringLiteral("Modules of the simulator, slot:type,..."),
                                         QStringLiteral("list"));
    const QCommandLineOption rate(QStringLiteral("rate"),
                                  QStringLiteral("Readings per second of the simulator."),
                                  QStringLiteral("number"));
    parser.addOptions({program, simulator, transcript, slotModules, rate});
    parser.addPositionalArgument(QStringLiteral("RESOURCE"),
                                 QStringLiteral("VISA resource of the instrument."),
                                 QStringLiteral("[RESOURCE]"));
    parser.process(application);

    LauncherOptions options;
    options.program = parser.value(program);
    options.simulator = parser.value(simulator);
    options.resource = parser.positionalArguments().value(0);
    options.simulatorArguments << QStringLiteral("--tcp") << QStringLiteral("0");
    for (const QCommandLineOption& passedOn : {transcript, slotModules, rate}) {
        if (parser.isSet(passedOn)) {
            options.simulatorArguments << QStringLiteral("--") + passedOn.names().constFirst()
                                       << parser.value(passedOn);
        }
    }
    return options;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setWindowIcon(windowIcon());
    QGuiApplication::setDesktopFileName(QStringLiteral("scn4070a"));
    QCoreApplication::setApplicationVersion(scn::versionText());
    qRegisterMetaType<ChildEnd>();
    LauncherOptions options = parseOptions(application);

    SimulatorProcess simulator;
    // Each simulated instrument has a port of its own; their data shares a place.
    QString place = options.resource;
    if (options.resource.isEmpty()) {
        place = QStringLiteral("simulator");
        options.resource = simulator.start(options.simulator, options.simulatorArguments);
        if (options.resource.isEmpty()) {
            std::fprintf(stderr, "%s\n", qUtf8Printable(simulator.errorText()));
            return 1;
        }
    }

    const auto claim = std::make_shared<ChildClaim>();
    if (!claim->take(options.program, options.resource, place)) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(claim->errorText()));
        return 1;
    }

    LauncherWindow window;
    window.resize(kWidth, kHeight);
    InstrumentChild child(&application, [](qulonglong, qint64) { return QString(); });
    QObject::connect(&child, &InstrumentChild::windowShown, &window, &LauncherWindow::embed);
    // Queued: a child that fails to start has ended before the event loop runs.
    QObject::connect(
        &child, &InstrumentChild::ended, &application,
        [&child](const ChildEnd& end) {
            if (!end.hasStarted) {
                std::fprintf(stderr, "the program did not start: %s\n",
                             qUtf8Printable(child.lastWords().join(QLatin1Char(' '))));
            }
            QCoreApplication::exit(end.isWanted ? 0 : end.exitCode != 0 ? 1 : 0);
        },
        Qt::QueuedConnection);
    QObject::connect(&window, &LauncherWindow::closing, &child, &InstrumentChild::end);
    onQuitSignal([&child] { child.end(); });
    child.start({claim->program(), options.resource, QProcessEnvironment::systemEnvironment(),
                 logPathFor(options.resource), claim});
    window.show();
    return QApplication::exec();
}
