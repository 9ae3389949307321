#include "acquisition/measurementdata.h"
#include "app/globals.h"
#include "app/helperthreads.h"
#include "app/launcharguments.h"
#include "app/mainwidget.h"
#include "export/exportresult.h"
#include "resources/resources.h"
#include "storage/curvedatadb.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QTimer>
#include <QVector>

#include <qwt_legend_data.h>

#include <csignal>
#include <cstdlib>

namespace {

/// How long helpers that still run may hold up the exit.
constexpr int kHelperWaitMs = 500;

/// Keeps the window that lives on main()'s stack from being deleted by its own close.
class DeletionFilter : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        return event->type() == QEvent::DeferredDelete;
    }
};

void registerMetaTypes()
{
    qRegisterMetaType<QList<QwtLegendData>>("QList<QwtLegendData>");
    qRegisterMetaType<MeasurementData>("MeasurementData");
    qRegisterMetaType<QList<MeasurementData>>("QList<MeasurementData>");
    qRegisterMetaType<QVector<int>>("QVector<int>");
    qRegisterMetaType<ExportResult>("ExportResult");
}

/// Reads the dark style sheet from the bundle through `file`; without it the program goes on plain.
void loadStyleSheet(QApplication& application, QFile& file)
{
    file.setFileName(QStringLiteral(":/qss/styles.qss"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qDebug() << "Failed to open style.qss:" << file.errorString();
        return;
    }
    const QByteArray bytes = file.readAll();
    application.setStyleSheet(QString::fromUtf8(bytes.constData()));
    file.close();
}

/// True when a helper outlived the window and its grace, so that static objects must not go.
bool runWindow(QApplication& application, int& status)
{
    const QStringList arguments = QCoreApplication::arguments();
    g_resourceName.clear();
    g_resourceName = resourceFromArguments(arguments);
    {
        DeletionFilter deletionFilter;
        MainWidget window(nullptr);
        window.installEventFilter(&deletionFilter);
        registerMetaTypes();
        initResources();
        QFile styleFile;
        loadStyleSheet(application, styleFile);
        window.move(200, 200);
        if (g_instrumentConnected)
            window.show();
        QTimer::singleShot(0, &window, &QWidget::show);
        status = QApplication::exec();
    }
    const bool helpersEnded = HelperThreads::waitForAll(kHelperWaitMs);
    CurveDataDB::shutdown();
    return !helpersEnded;
}

} // namespace

int main(int argc, char* argv[])
{
    // The launcher may go first: a write to it then fails and must not end the program.
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif

    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling, true);
    QApplication application(argc, argv);
    int status = 0;
    if (runWindow(application, status))
        std::_Exit(status);
    return status;
}
