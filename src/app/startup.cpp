#include "app/startup.h"

#include "acquisition/measurementdata.h"
#include "app/globals.h"
#include "common/threadassert.h"
#include "export/exportresult.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QList>
#include <QPoint>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <qwt_legend_data.h>

#include <csignal>

namespace {

constexpr QPoint kWindowPosition(200, 200);

} // namespace

void Startup::ignoreBrokenPipes()
{
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

void Startup::registerMetaTypes()
{
    qRegisterMetaType<QList<QwtLegendData>>("QList<QwtLegendData>");
    qRegisterMetaType<MeasurementData>("MeasurementData");
    qRegisterMetaType<QList<MeasurementData>>("QList<MeasurementData>");
    qRegisterMetaType<QVector<int>>("QVector<int>");
    qRegisterMetaType<ExportResult>("ExportResult");
}

void Startup::applyStyleSheet(QFile& file)
{
    assertGuiThread();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qDebug() << "Failed to open style.qss:" << file.errorString();
        return;
    }
    const QByteArray bytes = file.readAll();
    qApp->setStyleSheet(QString::fromUtf8(bytes.constData()));
    file.close();
}

void Startup::presentWindow(QWidget& window)
{
    assertGuiThread();
    window.move(kWindowPosition);
    if (g_instrumentConnected)
        window.show();
    QTimer::singleShot(0, &window, &QWidget::show);
}
