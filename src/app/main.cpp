#include "app/deletionfilter.h"
#include "app/launcharguments.h"
#include "app/mainwidget.h"
#include "app/standardstreams.h"
#include "app/startup.h"
#include "app/windowtiming.h"
#include "common/helperthreads.h"
#include "common/textresolution.h"
#include "common/version.h"
#include "resources/resources.h"
#include "resources/windowicon.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QLibraryInfo>

#include <cstdlib>

namespace {

/// True if a helper runs on regardless: static objects must then not be destroyed.
bool runWindow(int& status)
{
    const QStringList arguments = QCoreApplication::arguments();
    g_resourceName.clear();
    g_resourceName = resourceFromArguments(arguments);
    {
        scn::DeletionFilter deletionFilter;
        MainWidget window(nullptr);
        window.installEventFilter(&deletionFilter);
        scn::startup::registerMetaTypes();
        initResources();
        QApplication::setWindowIcon(windowIcon());
        QFile styleFile(QStringLiteral(":/qss/styles.qss"));
        scn::startup::applyStyleSheet(styleFile);
        scn::startup::presentWindow(window);
        status = QApplication::exec();
    }
    const bool helpersEnded = scn::helperthreads::waitForAll(scn::kHelperWait);
    CurveDataDB::shutdown();
    return !helpersEnded;
}

} // namespace

int main(int argc, char* argv[])
{
    scn::openMissingStreams();
    scn::startup::ignoreBrokenPipes();
    qInfo().noquote() << "SCN4070A 控制软件" << scn::versionText();
    scn::startup::keepTimeZone();
    scn::startup::keepFreedMemory();
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    scn::assumeResolution();
    const QApplication application(argc, argv);
    scn::startup::keepDecimalPoint();
    scn::startup::substituteFonts();
    scn::startup::loadTranslations(QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    int status = 0;
    if (runWindow(status)) {
        std::_Exit(status);
    }
    return status;
}
