#include "app/startup.h"

#include "acquisition/measurementdata.h"
#include "app/decimalkey.h"
#include "common/threadassert.h"
#include "export/exportresult.h"
#include "state/globals.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QFont>
#include <QFontDatabase>
#include <QList>
#include <QLocale>
#include <QPoint>
#include <QTimer>
#include <QTranslator>
#include <QVector>
#include <QWidget>
#include <qwt_legend_data.h>

#include <csignal>
#include <memory>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace scn::startup {
namespace {

constexpr QPoint kWindowPosition(200, 200);

#ifdef __GLIBC__
constexpr int kLargestKeptBlock = 32 << 20; // the most that the C library allows
constexpr int kMostKeptBytes = 64 << 20;
#endif

/// An installed font for Chinese text; empty if there is none.
QString chineseFont()
{
    const QStringList installed = QFontDatabase().families(QFontDatabase::SimplifiedChinese);
    for (const char* family :
         {"Noto Sans CJK SC", "Source Han Sans SC", "WenQuanYi Micro Hei", "WenQuanYi Zen Hei"}) {
        if (installed.contains(QLatin1String(family))) {
            return QLatin1String(family);
        }
    }
    return installed.value(0);
}

} // namespace

void ignoreBrokenPipes()
{
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

void keepTimeZone()
{
    const QByteArray file = QByteArrayLiteral("/etc/localtime");
    if (!qEnvironmentVariableIsSet("TZ") && QFile::exists(QFile::decodeName(file))) {
        qputenv("TZ", ':' + file);
    }
}

void keepFreedMemory()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, kLargestKeptBlock);
    mallopt(M_TRIM_THRESHOLD, kMostKeptBytes);
#endif
}

void keepDecimalPoint()
{
    assertGuiThread();
    if (QLocale().decimalPoint() != QLatin1Char('.')) {
        QLocale::setDefault(QLocale(QLocale::Chinese, QLocale::China));
        qApp->installEventFilter(new DecimalKey(qApp));
    }
}

void registerMetaTypes()
{
    qRegisterMetaType<QList<QwtLegendData>>("QList<QwtLegendData>");
    qRegisterMetaType<MeasurementData>("MeasurementData");
    qRegisterMetaType<QList<MeasurementData>>("QList<MeasurementData>");
    qRegisterMetaType<QVector<int>>("QVector<int>");
    qRegisterMetaType<ExportResult>("ExportResult");
}

void applyStyleSheet(QFile& file)
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

void substituteFonts()
{
    assertGuiThread();
    const QString substitute = chineseFont();
    if (substitute.isEmpty()) {
        return;
    }
    const QStringList installed = QFontDatabase().families();
    for (const QString& family :
         {QStringLiteral("Microsoft YaHei"), QStringLiteral("微软雅黑"), QStringLiteral("Arial")}) {
        if (!installed.contains(family, Qt::CaseInsensitive)) {
            QFont::insertSubstitution(family, substitute);
        }
    }
}

void loadTranslations(const QString& directory)
{
    assertGuiThread();
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(QStringLiteral("qtbase_zh_CN"), directory)) {
        qWarning().noquote() << "未找到Qt中文翻译文件:" << directory;
        return;
    }
    translator->setParent(qApp);
    QCoreApplication::installTranslator(translator.release());
}

void presentWindow(QWidget& window)
{
    assertGuiThread();
    window.move(kWindowPosition);
    if (g_instrumentConnected) {
        window.show();
    }
    QTimer::singleShot(0, &window, &QWidget::show);
}

} // namespace scn::startup
