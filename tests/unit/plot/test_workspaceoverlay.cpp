#include "acquisition/readdata.h"
#include "overlay/busyring.h"
#include "overlay/loadingview.h"
#include "plot/ccurveplot.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "seriesstore.h"
#include "support/settle.h"
#include "support/testprogram.h"
#include "support/timerhand.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPaintEvent>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <QtTest>

namespace {

/// The paint events of the program's widgets, in coordinates of one of them.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(const QWidget* page)
        : m_page(page)
    {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Paint && widget && m_page->isAncestorOf(widget)) {
            const QRegion painted = static_cast<QPaintEvent*>(event)->region();
            m_region += painted.translated(widget->mapTo(m_page, QPoint()));
            ++m_events;
        }
        return QObject::eventFilter(watched, event);
    }

    QRect painted() const { return m_region.boundingRect(); }
    int events() const { return m_events; }

    void reset()
    {
        m_region = QRegion();
        m_events = 0;
    }

private:
    const QWidget* m_page;
    QRegion m_region;
    int m_events = 0;
};

QImage onScreen(const QWidget& window)
{
    return window.screen()
        ->grabWindow(window.winId())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

int pixelsUnlike(const QImage& one, const QImage& other)
{
    int unlike = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            unlike += one.pixel(x, y) != other.pixel(x, y) ? 1 : 0;
        }
    }
    return unlike;
}

} // namespace

/// The busy overlay on a page with four charts.
class TestWorkspaceOverlay : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initResources();
        g_scanChannels.clear();
    }
    void cleanupTestCase() { delete ReadData::instance(); }

    void turningRingRepaintsOnlyWhereItIs();
};

void TestWorkspaceOverlay::turningRingRepaintsOnlyWhereItIs()
{
    GraphicSettingWidget page;
    page.resize(1000, 700);
    page.show();
    for (int chart = 0; chart < 4; ++chart) {
        QMetaObject::invokeMethod(&page, "recvGraphicBtnSlots");
    }
    page.findChild<QMdiArea*>()->tileSubWindows();
    LoadingView view(LoadingView::Busy, &page);
    view.showLoading();
    settle();
    const QRect ring = scn::BusyRing::bounds(view.viewport()->rect());
    // The ring is an eighth of the lesser side to each side.
    QVERIFY(ring.width() < page.height() / 4 + 10 && ring.height() < page.height() / 4 + 10);
    for (const QMdiSubWindow* window : page.findChild<QMdiArea*>()->subWindowList()) {
        QVERIFY(ring.intersects(QRect(window->mapTo(&page, QPoint()), window->size())));
    }

    auto* timer = view.findChild<QTimer*>();
    PaintWatch watch(&page);
    QImage before = onScreen(page);
    for (int step = 0; step < 30; ++step) {
        watch.reset();
        runOut(timer);
        settle();
        QVERIFY(watch.events() > 0);
        QVERIFY(ring.contains(watch.painted()));
        // Nothing of the last step is left outside of what was painted.
        const QImage shown = onScreen(page);
        QVERIFY(pixelsUnlike(shown, before) > 100);
        QCOMPARE(pixelsUnlike(shown, page.grab().toImage().convertToFormat(QImage::Format_RGB32)),
                 0);
        settle();
        before = shown;
    }
}

SCN_TEST(TestWorkspaceOverlay, QApplication)
#include "test_workspaceoverlay.moc"
