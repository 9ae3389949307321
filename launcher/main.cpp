#include "common/textresolution.h"
#include "common/version.h"
#include "launcher/launcheroptions.h"
#include "launcher/launcherwindow.h"
#include "launcher/look.h"
#include "launcher/nativewindows.h"
#include "launcher/quitsignals.h"
#include "launcher/serialrate.h"
#include "resources/windowicon.h"

#include <QApplication>

#include <cstdio>

using namespace scnlauncher;

namespace {

constexpr int kFailure = 1;

void say(std::FILE* stream, const QString& line)
{
    std::fprintf(stream, "%s\n", qUtf8Printable(line));
}

/// Reads the command line without a display. Returns false if the program ends here, with `status`.
bool readOptions(int argc, char* argv[], LauncherOptions& options, int& status)
{
    const QCoreApplication application(argc, argv);
    options = LauncherOptions::parse(QCoreApplication::arguments());
    status = 0;
    if (!options.errorText.isEmpty()) {
        say(stderr, QStringLiteral("scn4070a-launcher: ") + options.errorText);
        status = kFailure;
    } else if (options.asksForHelp) {
        std::fputs(qUtf8Printable(options.helpText), stdout);
    } else if (options.asksForVersion) {
        say(stdout, QStringLiteral("scn4070a-launcher ") + scn::versionText());
    } else {
        return true;
    }
    return false;
}

/// Platforms without a screen, which need no display.
bool hasNoScreen(const QString& platform)
{
    const QString name = platform.section(QLatin1Char(':'), 0, 0);
    return name == QLatin1String("offscreen") || name == QLatin1String("minimal");
}

/// Embedding works on X11 only; a Wayland session serves it beside its own. Desktops that set another
/// platform for all programs are overruled, for the child too.
bool chooseDisplay(const NativeWindows& windows)
{
    if (hasNoScreen(qEnvironmentVariable("QT_QPA_PLATFORM"))) {
        return true;
    }
    if (windows.isConnected()) {
        qputenv("QT_QPA_PLATFORM", "xcb");
        return true;
    }
    const QString display = qEnvironmentVariable("DISPLAY");
    QString reason = QStringLiteral("DISPLAY is \"%1\", which does not answer.").arg(display);
    if (display.isEmpty() && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        reason = QStringLiteral("DISPLAY is not set. This Wayland session needs Xwayland.");
    } else if (display.isEmpty()) {
        reason = QStringLiteral("DISPLAY is not set. Start it in a graphical session.");
    }
    say(stderr, QStringLiteral("scn4070a-launcher: there is no display: ") + reason);
    return false;
}

} // namespace

int main(int argc, char* argv[])
{
    LauncherOptions options;
    int status = 0;
    if (!readOptions(argc, argv, options, status)) {
        return status;
    }
    const NativeWindows windows;
    if (!chooseDisplay(windows)) {
        return kFailure;
    }
    // As the program does: the two look like one.
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    scn::assumeResolution();
    const QApplication application(argc, argv);
    QApplication::setWindowIcon(windowIcon());
    QGuiApplication::setDesktopFileName(QStringLiteral("scn4070a"));
    applyLook();
    const LauncherSettings settings;
    const Workshop workshop{options.program,
                            options.simulator,
                            options.simulatorArguments,
                            InstrumentSources::ofThisMachine(),
                            settings,
                            windows};
    LauncherWindow window(workshop);
    onQuitSignal([&window] { window.endAll(); });
    window.show();
    if (options.isSimulated || !options.resource.isEmpty()) {
        window.open(
            {options.resource, options.isSimulated, unchosenRate(options.resource, settings)});
    }
    return QApplication::exec();
}
