#include "exportbench.h"

#include "app/mainwidget.h"
#include "app/startup.h"
#include "common/helperthreads.h"
#include "exportdialoghand.h"
#include "overlay/loadingview.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "userhand.h"
#include "widgets/customdialog.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTimer>
#include <QtTest>

using userhand::click;
using userhand::enterText;

namespace {

constexpr std::chrono::seconds kThreadsWait{10};
const QString kRunTimeFormat = QStringLiteral("yyyy MM dd hh mm ss");

} // namespace

class ExportBench::OutcomeWatch : public QObject
{
public:
    explicit OutcomeWatch(ExportBench& bench)
        : m_bench(bench)
    {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* const overlay =
            event->type() == QEvent::Hide ? qobject_cast<LoadingView*>(watched) : nullptr;
        // The message comes right after it, unless the window goes.
        if (overlay && m_bench.m_awaited) {
            QTimer::singleShot(0, overlay, [this] {
                m_bench.m_outcome = m_bench.message();
                m_bench.m_awaited = false;
            });
        }
        return false;
    }

private:
    ExportBench& m_bench;
};

ExportBench::ExportBench(const QString& serialNumber)
    : m_watch(std::make_unique<OutcomeWatch>(*this))
{
    instrument().putModule(2, QStringLiteral("SCN4005A"));
    instrument().setReply(QStringLiteral("*IDN?"),
                          QStringLiteral("MAKER,SCN4070A,%1,1.00").arg(serialNumber));
    instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#210(@201,202)"));
    open().show();
    startupView()->stopLoading();
}

ExportBench::~ExportBench()
{
    g_scanRunning = false;
}

QString ExportBench::serial()
{
    const QString tag = QLatin1String(QTest::currentDataTag());
    return QLatin1String(QTest::currentTestFunction()) + QString(tag).remove(QLatin1Char(' '));
}

void ExportBench::wearTheProgramsStyle()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    initResources();
    QFile sheet(QStringLiteral(":/qss/styles.qss"));
    scn::startup::applyStyleSheet(sheet);
}

void ExportBench::closeStore()
{
    QVERIFY(scn::helperthreads::waitForAll(kThreadsWait));
    CurveDataDB::shutdown();
}

void ExportBench::removeStore()
{
    QDir(QDir(QCoreApplication::applicationDirPath()).filePath(serial() + QStringLiteral("_Data")))
        .removeRecursively();
}

QStringList ExportBench::filesBesideTheProgram()
{
    return QDir(QCoreApplication::applicationDirPath())
        .entryList({serial() + QStringLiteral("_*.csv")}, QDir::Files);
}

void ExportBench::removeLeftovers()
{
    const QDir programs(QCoreApplication::applicationDirPath());
    for (const QString& name : filesBesideTheProgram()) {
        QFile::remove(programs.filePath(name));
    }
    removeStore();
}

void ExportBench::scan(int rows)
{
    click(startButton());
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, kEndWaitMs);
    click(startButton());
    g_scanRunning = false;
    QVERIFY(exportButton()->isEnabled());
    const QDateTime now = QDateTime::currentDateTime();
    start = now.addMSecs(-now.time().msec());
    CurveDataDB* const store = CurveDataDB::instance(QString());
    const QList<int> ids = store->curveNames().keys();
    QCOMPARE(ids.size(), 2);
    for (int curve = 0; curve < 2; ++curve) {
        QVector<QPointF> points;
        for (int row = 0; row < rows - curve; ++row) {
            points.append({double(timeOf(row).toMSecsSinceEpoch()), valueOf(curve, row)});
        }
        store->appendPoints(ids.at(curve), points);
    }
    store->flushPending();
    g_scanStartText = start.toString(kRunTimeFormat);
    g_scanEndText = timeOf(rows - 2).toString(kRunTimeFormat);
}

QByteArray ExportBench::csv(const QString& separator) const
{
    const auto line = [&separator](const QStringList& cells) -> QString {
        return cells.join(separator) + QLatin1Char('\n');
    };
    const auto names = CurveDataDB::instance(QString())->curveNames().values();
    QString text =
        QString(QChar(QChar::ByteOrderMark)) + line({QStringLiteral("地址"), g_resourceName}) +
        line({QStringLiteral("型号"), QStringLiteral("SCN4070A")}) +
        line({QStringLiteral("序列号："), serial()}) +
        line({QStringLiteral("开始时间"), g_scanStartText}) +
        line({QStringLiteral("结束时间"), g_scanEndText}) +
        line({QStringLiteral("编号"), QStringLiteral("时间"), names.at(0), names.at(1), {}});
    for (int row = 0; row < 4; ++row) {
        text += line({QString::number(row + 1),
                      timeOf(row).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")),
                      QString::asprintf("%.15E", valueOf(0, row)),
                      QString::asprintf("%.15E", valueOf(1, row))});
    }
    return text.toUtf8();
}

void ExportBench::inDialog(const std::function<void(const ExportDialogHand&)>& work)
{
    bool hasWorked = false;
    m_awaited = true;
    m_outcome.clear();
    QTimer::singleShot(0, &window(), [this, &work, &hasWorked] {
        auto* dialog = window().findChild<CustomDialog*>();
        QVERIFY(dialog);
        QVERIFY(QTest::qWaitForWindowExposed(dialog));
        work(ExportDialogHand(dialog));
        hasWorked = true;
        dialog->close();
    });
    click(exportButton());
    QVERIFY(hasWorked);
}

void ExportBench::startExport(const QString& directory, const QString& name)
{
    inDialog([&directory, &name](const ExportDialogHand& dialog) {
        dialog.chooseDirectory(directory);
        enterText(dialog.name(), name);
        click(dialog.toFile());
    });
}

void ExportBench::exportTo(const QString& directory, const QString& name)
{
    startExport(directory, name);
    waitForEnd();
}

void ExportBench::waitForEnd() const
{
    QTRY_VERIFY_WITH_TIMEOUT(exportView() && exportView()->isHidden() && !m_awaited, kEndWaitMs);
}

LoadingView* ExportBench::exportView() const
{
    QList<LoadingView*> busy;
    for (LoadingView* view :
         window().findChildren<LoadingView*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (view != reconnectView()) {
            busy.append(view);
        }
    }
    return busy.value(1);
}

bool ExportBench::isInformation() const
{
    return messageDialog()->windowTitle() == QStringLiteral("信息") &&
           messageDialog()->findChild<QTimer*>()->interval() == 3000;
}

QString withoutStamps(QString text)
{
    return text.remove(QRegularExpression(QStringLiteral("_\\d{14}(?=\\.csv)")));
}

QStringList csvFiles(const QString& directory)
{
    return QDir(directory).entryList({QStringLiteral("*.csv")}, QDir::Files);
}
