#include "app/startup.h"
#include "common/textresolution.h"
#include "pictures.h"
#include "resources/resources.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QtTest>

/// The application is set up as the program's.
int main(int argc, char* argv[])
{
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    scn::assumeResolution();
    const QApplication application(argc, argv);
    scn::startup::substituteFonts();
    scn::startup::loadTranslations(QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    scn::startup::registerMetaTypes();
    initResources();
    Pictures pictures;
    return QTest::qExec(&pictures, argc, argv);
}
