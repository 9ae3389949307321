#include "storetool/drawing/drawingapplication.h"

#include "common/textresolution.h"
#include "resources/resources.h"

#include <QApplication>
#include <QFile>

namespace scnstore {

std::unique_ptr<QCoreApplication> makeDrawingApplication(int& argc, char* argv[])
{
    // A display, where there is one, would bring its own fonts and scale.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    for (const char* variable :
         {"QT_FONT_DPI", "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_STYLE_OVERRIDE"}) {
        qunsetenv(variable);
    }
    scn::assumeResolution();
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    return std::make_unique<QApplication>(argc, argv);
}

void applyPictureStyle(PictureStyle style)
{
    if (style == PictureStyle::Light) {
        qApp->setStyleSheet(
            QStringLiteral("QWidget { background-color: white; border: 0px; color: black; }"));
        return;
    }
    initResources();
    QFile sheet(QStringLiteral(":/qss/styles.qss"));
    if (sheet.open(QIODevice::ReadOnly)) {
        qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
    }
}

} // namespace scnstore
