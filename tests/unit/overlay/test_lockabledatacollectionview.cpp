#include "overlay/lockabledatacollectionview.h"
#include "support/animationclock.h"
#include "support/testprogram.h"
#include "support/timerhand.h"

#include <QElapsedTimer>
#include <QFontMetrics>
#include <QGraphicsOpacityEffect>
#include <QGraphicsProxyWidget>
#include <QGraphicsRectItem>
#include <QPointer>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

using namespace std::chrono_literals;

const QString kIdleText = QStringLiteral("点击并按住解锁,并清除数据");
const QString kHeldText = QStringLiteral("正在解锁...");

QList<QGraphicsRectItem*> veilsOf(const LockableDataCollectionView& view)
{
    QList<QGraphicsRectItem*> veils;
    for (QGraphicsItem* item : view.scene()->items()) {
        if (auto* veil = qgraphicsitem_cast<QGraphicsRectItem*>(item)) {
            veils << veil;
        }
    }
    return veils;
}

QGraphicsProxyWidget* proxyOf(const LockableDataCollectionView& view)
{
    for (QGraphicsItem* item : view.scene()->items()) {
        if (auto* proxy = qgraphicsitem_cast<QGraphicsProxyWidget*>(item)) {
            return proxy;
        }
    }
    return nullptr;
}

QPushButton* barOf(const LockableDataCollectionView& view)
{
    return qobject_cast<QPushButton*>(proxyOf(view)->widget());
}

bool isFading(const LockableDataCollectionView& view)
{
    const QList<QGraphicsRectItem*> veils = veilsOf(view);
    return veils.size() == 1 && veils.first()->graphicsEffect();
}

QPoint barCentre(const LockableDataCollectionView& view)
{
    return view.mapFromScene(proxyOf(view)->geometry().center());
}

/// The hold timer, the view's only one.
QTimer* holdOf(const LockableDataCollectionView& view)
{
    return view.findChild<QTimer*>();
}

void press(LockableDataCollectionView& view)
{
    QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::NoModifier, barCentre(view));
}

void release(LockableDataCollectionView& view)
{
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, Qt::NoModifier, barCentre(view));
}

} // namespace

class TestLockableDataCollectionView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startsLockedHiddenAndVeiled();
    void styleIsFixed();
    void barIsCentredAtHalfTheWidth_data();
    void barIsCentredAtHalfTheWidth();
    void veilAndBarFollowTheSize();
    void barLiesOverTheVeil();
    void barLiesOverAFreshVeilToo();
    void pressShowsThatItUnlocks();
    void unlockBeforeOneSecondChangesNothing();
    void holdOfOneSecondFadesWhileTheButtonIsDown();
    void fadeTakesHalfASecondFromFullToNothing();
    void unlockedViewHasNoVeil();
    void lockMakesAFreshVeilAfterAnUnlock();
    void lockDuringTheFadeEndsItUnheard();
    void lockDuringTheFadeCanBeUnlockedAtOnce();
    void globalLockWhileLockedDoesNothing();
    void globalUnlockWhileUnlockedDoesNothing();
    void globalLockAndUnlockTakeTurns();
    void secondUnlockDuringTheFadeIsOneUnlock();
    void pressDuringTheFadeDoesNotUnlockTheNextLock();
    void holdTimeCanBeSet();
    void holdAndFadeTakeTheTimeTheyAreGiven();
    void veilIsEnsuredOnlyWhileLocked();
    void hiddenViewStillEndsItsHold();
    void deletedDuringTheFadeIsHarmless();
    void coversItsPageUnderAStyleSheetThatDrawsFrames();
    void followsItsPagesSize();
    void barOfANarrowPageShowsItsText_data();
    void barOfANarrowPageShowsItsText();
    void barStaysInSightOfAScrolledPage();
    void barFollowsTheVisiblePart();

private:
    std::unique_ptr<AnimationClock> m_clock;
    std::unique_ptr<QWidget> m_page;
    LockableDataCollectionView* m_view = nullptr;
};

void TestLockableDataCollectionView::init()
{
    m_clock = std::make_unique<AnimationClock>();
    m_page = std::make_unique<QWidget>();
    m_page->resize(600, 400);
    m_view = new LockableDataCollectionView(m_page.get());
    m_page->show();
    QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    m_view->setGeometry(m_page->rect());
    m_view->show();
}

void TestLockableDataCollectionView::cleanup()
{
    m_page.reset();
    m_clock.reset();
}

void TestLockableDataCollectionView::startsLockedHiddenAndVeiled()
{
    const LockableDataCollectionView view;
    QVERIFY(view.isLocked());
    QVERIFY(view.isHidden());
    QCOMPARE(veilsOf(view).size(), 1);
    QCOMPARE(veilsOf(view).first()->rect(), QRectF(0, 0, 400, 200));
    QCOMPARE(veilsOf(view).first()->brush(), QBrush(QColor(50, 50, 50, 180), Qt::SolidPattern));
    QCOMPARE(barOf(view)->text(), kIdleText);
    QCOMPARE(proxyOf(view)->geometry(), QRectF(100, 75, 200, 50));
}

void TestLockableDataCollectionView::styleIsFixed()
{
    QCOMPARE(m_view->styleSheet(), QStringLiteral("background-color: rgba(50, 50, 50, 180);"));
    QCOMPARE(barOf(*m_view)->styleSheet(),
             QStringLiteral("color:#13C4FF;font-weight:bold;font-size:16px;"));
    QVERIFY(m_view->testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(m_view->resizeAnchor(), QGraphicsView::AnchorViewCenter);
    QVERIFY(m_view->renderHints() & QPainter::Antialiasing);
    QVERIFY(!m_view->isWindow());
}

void TestLockableDataCollectionView::barIsCentredAtHalfTheWidth_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("page") << QSize(600, 400);
    QTest::newRow("narrower than the text") << QSize(120, 300);
    QTest::newRow("lower than the bar") << QSize(400, 30);
}

void TestLockableDataCollectionView::barIsCentredAtHalfTheWidth()
{
    QFETCH(QSize, size);
    m_view->resize(size);
    const QRectF expected(size.width() / 4.0, (size.height() - 50) / 2.0, size.width() / 2.0, 50);
    QCOMPARE(proxyOf(*m_view)->geometry(), expected);
    QCOMPARE(barOf(*m_view)->size(), expected.size().toSize());
}

void TestLockableDataCollectionView::veilAndBarFollowTheSize()
{
    for (const QSize& size : {QSize(500, 300), QSize(700, 200)}) {
        m_view->resize(size);
        QCOMPARE(m_view->scene()->sceneRect(), QRectF(QPointF(0, 0), size));
        QCOMPARE(veilsOf(*m_view).first()->rect(), QRectF(QPointF(0, 0), size));
        QCOMPARE(proxyOf(*m_view)->geometry().center(),
                 QPointF(size.width() / 2.0, size.height() / 2.0));
    }
}

void TestLockableDataCollectionView::barLiesOverTheVeil()
{
    QCOMPARE(m_view->scene()->items(QPointF(300, 200)).first(), proxyOf(*m_view));
}

void TestLockableDataCollectionView::barLiesOverAFreshVeilToo()
{
    m_view->lock();
    m_view->show();
    QCOMPARE(m_view->scene()->items(QPointF(300, 200)).first(), proxyOf(*m_view));
    QCOMPARE(veilsOf(*m_view).first()->rect(), QRectF(0, 0, 600, 400));
}

void TestLockableDataCollectionView::pressShowsThatItUnlocks()
{
    press(*m_view);
    QCOMPARE(barOf(*m_view)->text(), kHeldText);
    QVERIFY(!isFading(*m_view));
    release(*m_view);
    QCOMPARE(barOf(*m_view)->text(), kIdleText);
}

void TestLockableDataCollectionView::unlockBeforeOneSecondChangesNothing()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    press(*m_view);
    QTimer* hold = holdOf(*m_view);
    QVERIFY(hold->isActive());
    QCOMPARE(hold->interval(), 1000);
    // A coarse timer may expire 5 % early.
    QCOMPARE(hold->timerType(), Qt::PreciseTimer);
    release(*m_view);
    QVERIFY(!hold->isActive());
    QCOMPARE(barOf(*m_view)->text(), kIdleText);
    m_clock->pass(700ms);
    QVERIFY(!isFading(*m_view));
    QVERIFY(m_view->isLocked());
    QVERIFY(m_view->isVisible());
    QCOMPARE(unlocked.count(), 0);
}

void TestLockableDataCollectionView::holdOfOneSecondFadesWhileTheButtonIsDown()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    press(*m_view);
    QCOMPARE(holdOf(*m_view)->interval(), 1000);
    QVERIFY(!isFading(*m_view));
    runOut(holdOf(*m_view));
    QVERIFY(isFading(*m_view));
    QVERIFY(!holdOf(*m_view)->isActive());
    QVERIFY(barOf(*m_view)->isDown());
    QVERIFY(m_view->isLocked());
    QCOMPARE(unlocked.count(), 0);

    release(*m_view);
    QVERIFY(isFading(*m_view));
    QCOMPARE(barOf(*m_view)->text(), kHeldText);
    m_clock->pass(499ms);
    QVERIFY(m_view->isLocked());
    QCOMPARE(unlocked.count(), 0);
    m_clock->pass(1ms);
    QCOMPARE(unlocked.count(), 1);
    QVERIFY(!m_view->isLocked());
    // The bar stays visible until the view is hidden.
    QVERIFY(m_view->isVisible());
    QVERIFY(barOf(*m_view)->isVisible());
}

void TestLockableDataCollectionView::fadeTakesHalfASecondFromFullToNothing()
{
    m_view->globalUnlock();
    const auto* fade = m_view->findChild<QPropertyAnimation*>();
    QVERIFY(fade);
    QCOMPARE(fade->duration(), 500);
    QCOMPARE(fade->startValue().toDouble(), 1.0);
    QCOMPARE(fade->endValue().toDouble(), 0.0);
    QCOMPARE(fade->propertyName(), QByteArrayLiteral("opacity"));
    const auto* effect =
        qobject_cast<QGraphicsOpacityEffect*>(veilsOf(*m_view).first()->graphicsEffect());
    QVERIFY(effect);
    QCOMPARE(fade->targetObject(), effect);
    QCOMPARE(effect->opacity(), 1.0);
    m_clock->pass(100ms);
    QCOMPARE(effect->opacity(), 0.8);
    m_clock->pass(300ms);
    QCOMPARE(effect->opacity(), 0.2);
    const QPointer<const QGraphicsOpacityEffect> watched = effect;
    m_clock->pass(100ms);
    QVERIFY(!m_view->isLocked());
    // The effect has disappeared with the veil.
    QVERIFY(!watched);
    QTRY_VERIFY(!m_view->findChild<QPropertyAnimation*>());
}

void TestLockableDataCollectionView::unlockedViewHasNoVeil()
{
    bool veiledAtSignal = true;
    bool lockedAtSignal = true;
    connect(m_view, &LockableDataCollectionView::unlocked, this, [&] {
        veiledAtSignal = !veilsOf(*m_view).isEmpty();
        lockedAtSignal = m_view->isLocked();
    });
    m_view->globalUnlock();
    m_clock->pass(500ms);
    QVERIFY(!lockedAtSignal);
    QVERIFY(!veiledAtSignal);
    QVERIFY(veilsOf(*m_view).isEmpty());
    // A view without its veil can still be resized.
    m_view->resize(300, 200);
    QCOMPARE(proxyOf(*m_view)->geometry(), QRectF(75, 75, 150, 50));
}

void TestLockableDataCollectionView::lockMakesAFreshVeilAfterAnUnlock()
{
    press(*m_view);
    runOut(holdOf(*m_view));
    m_clock->pass(500ms);
    QVERIFY(!m_view->isLocked());
    QCOMPARE(barOf(*m_view)->text(), kHeldText);
    QSignalSpy locked(m_view, &LockableDataCollectionView::locked);
    bool shownAtSignal = false;
    connect(m_view, &LockableDataCollectionView::locked, this,
            [&] { shownAtSignal = m_view->isVisible(); });
    m_view->lock();
    QCOMPARE(locked.count(), 1);
    QVERIFY(shownAtSignal);
    QVERIFY(m_view->isLocked());
    QVERIFY(m_view->isHidden());
    QCOMPARE(veilsOf(*m_view).size(), 1);
    QVERIFY(!veilsOf(*m_view).first()->graphicsEffect());
    QCOMPARE(barOf(*m_view)->text(), kIdleText);

    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    m_view->globalUnlock();
    m_clock->pass(500ms);
    QCOMPARE(unlocked.count(), 1);
}

void TestLockableDataCollectionView::lockDuringTheFadeEndsItUnheard()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    m_view->globalUnlock();
    m_clock->pass(100ms);
    m_view->lock();
    QVERIFY(!isFading(*m_view));
    m_clock->pass(600ms);
    QCOMPARE(unlocked.count(), 0);
    QVERIFY(m_view->isLocked());
    QCOMPARE(veilsOf(*m_view).size(), 1);
}

void TestLockableDataCollectionView::lockDuringTheFadeCanBeUnlockedAtOnce()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    m_view->globalUnlock();
    m_clock->pass(50ms);
    m_view->lock();
    m_view->globalUnlock();
    QVERIFY(isFading(*m_view));
    m_clock->pass(500ms);
    QCOMPARE(unlocked.count(), 1);
    QVERIFY(!m_view->isLocked());
}

void TestLockableDataCollectionView::globalLockWhileLockedDoesNothing()
{
    QSignalSpy locked(m_view, &LockableDataCollectionView::locked);
    const QGraphicsRectItem* veil = veilsOf(*m_view).first();
    m_view->globalLock();
    QCOMPARE(locked.count(), 0);
    QCOMPARE(veilsOf(*m_view).first(), veil);
    QVERIFY(m_view->isVisible());
}

void TestLockableDataCollectionView::globalUnlockWhileUnlockedDoesNothing()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    m_view->globalUnlock();
    m_clock->pass(500ms);
    QCOMPARE(unlocked.count(), 1);
    m_view->globalUnlock();
    QVERIFY(!m_view->findChild<QPropertyAnimation*>() ||
            m_view->findChild<QPropertyAnimation*>()->state() == QAbstractAnimation::Stopped);
    m_clock->pass(600ms);
    QCOMPARE(unlocked.count(), 1);
}

void TestLockableDataCollectionView::globalLockAndUnlockTakeTurns()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    QSignalSpy locked(m_view, &LockableDataCollectionView::locked);
    m_view->globalUnlock();
    m_clock->pass(500ms);
    QCOMPARE(unlocked.count(), 1);
    m_view->globalLock();
    QCOMPARE(locked.count(), 1);
    QVERIFY(m_view->isLocked());
}

void TestLockableDataCollectionView::secondUnlockDuringTheFadeIsOneUnlock()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    m_view->globalUnlock();
    m_clock->pass(50ms);
    m_view->globalUnlock();
    m_clock->pass(500ms);
    QCOMPARE(unlocked.count(), 1);
    m_clock->pass(600ms);
    QCOMPARE(unlocked.count(), 1);
}

void TestLockableDataCollectionView::pressDuringTheFadeDoesNotUnlockTheNextLock()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    m_view->globalUnlock();
    press(*m_view);
    // The hold would end after the fade, when the view is locked again.
    QVERIFY(!holdOf(*m_view)->isActive());
    m_clock->pass(500ms);
    QCOMPARE(unlocked.count(), 1);
    m_view->lock();
    QVERIFY(!holdOf(*m_view)->isActive());
    m_clock->pass(900ms);
    QVERIFY(m_view->isLocked());
    QCOMPARE(unlocked.count(), 1);
}

void TestLockableDataCollectionView::holdTimeCanBeSet()
{
    m_view->setUnlockHoldTime(20);
    QElapsedTimer held;
    held.start();
    press(*m_view);
    QCOMPARE(holdOf(*m_view)->interval(), 20);
    QTRY_VERIFY(isFading(*m_view));
    QVERIFY2(held.elapsed() >= 20, qPrintable(QString::number(held.elapsed())));
    QCOMPARE(m_view->findChild<QPropertyAnimation*>()->duration(), 500);
}

/// By the real clock.
void TestLockableDataCollectionView::holdAndFadeTakeTheTimeTheyAreGiven()
{
    m_clock.reset();
    m_view->setTiming({40ms, 30ms});
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    QElapsedTimer held;
    held.start();
    // A poll could miss the fade.
    qint64 heldMs = 0;
    connect(holdOf(*m_view), &QTimer::timeout, this, [&] { heldMs = held.elapsed(); });
    press(*m_view);
    QTRY_COMPARE(unlocked.count(), 1);
    QVERIFY2(heldMs >= 40, qPrintable(QString::number(heldMs)));
    QVERIFY2(held.elapsed() >= 70, qPrintable(QString::number(held.elapsed())));
}

void TestLockableDataCollectionView::veilIsEnsuredOnlyWhileLocked()
{
    m_view->ensureVeil();
    QCOMPARE(veilsOf(*m_view).size(), 1);
    m_view->globalUnlock();
    m_clock->pass(500ms);
    QVERIFY(!m_view->isLocked());
    m_view->ensureVeil();
    QVERIFY(veilsOf(*m_view).isEmpty());
}

void TestLockableDataCollectionView::hiddenViewStillEndsItsHold()
{
    m_clock.reset();
    m_view->setTiming({20ms, 20ms});
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    press(*m_view);
    m_view->hide();
    QTRY_COMPARE(unlocked.count(), 1);
    QVERIFY(m_view->isHidden());
}

void TestLockableDataCollectionView::deletedDuringTheFadeIsHarmless()
{
    QSignalSpy unlocked(m_view, &LockableDataCollectionView::unlocked);
    m_view->globalUnlock();
    m_clock->pass(50ms);
    m_page.reset();
    m_clock->pass(550ms);
    QCOMPARE(unlocked.count(), 0);
}

void TestLockableDataCollectionView::coversItsPageUnderAStyleSheetThatDrawsFrames()
{
    m_page->setStyleSheet(
        QStringLiteral("QAbstractScrollArea { border: 1px solid red; padding: 2px; }"));
    m_view->resize(500, 300);
    QTRY_COMPARE(m_view->viewport()->geometry(), QRect(0, 0, 500, 300));
    QCOMPARE(m_view->scene()->sceneRect(), QRectF(0, 0, 500, 300));
    QCOMPARE(barCentre(*m_view), QPoint(250, 150));
}

void TestLockableDataCollectionView::followsItsPagesSize()
{
    m_page->resize(500, 700);
    QCOMPARE(m_view->geometry(), m_page->rect());
    QCOMPARE(veilsOf(*m_view).first()->rect(), QRectF(m_page->rect()));
    QCOMPARE(proxyOf(*m_view)->geometry(), QRectF(125, 325, 250, 50));
}

void TestLockableDataCollectionView::barOfANarrowPageShowsItsText_data()
{
    QTest::addColumn<int>("width");
    for (const int width : {500, 400, 320, 292, 200, 150}) {
        QTest::addRow("%d", width) << width;
    }
}

void TestLockableDataCollectionView::barOfANarrowPageShowsItsText()
{
    QFETCH(int, width);
    m_page->resize(width, 400);
    const QPushButton* bar = barOf(*m_view);
    const QFontMetrics text(bar->font());
    QVERIFY2(bar->width() >= text.horizontalAdvance(kIdleText) + 4,
             qPrintable(QString::number(bar->width())));
    QVERIFY(bar->font().bold());
    QVERIFY(bar->font().pixelSize() >= 9);
    const QRectF place = proxyOf(*m_view)->geometry();
    QVERIFY(place.left() >= 0 && place.right() <= width);
    QCOMPARE(place.center(), QPointF(width / 2.0, 200));
    if (width > 300) {
        QVERIFY(bar->font().pixelSize() >= 11);
    }
}

void TestLockableDataCollectionView::barStaysInSightOfAScrolledPage()
{
    QScrollArea area;
    area.resize(320, 300);
    auto* page = new QWidget;
    page->setFixedSize(500, 900);
    area.setWidget(page);
    m_view->setParent(page);
    m_view->setGeometry(page->rect());
    m_view->show();
    area.show();
    QVERIFY(QTest::qWaitForWindowExposed(&area));
    const QRect sight = area.viewport()->rect();
    const auto barInSight = [this, &area] {
        const QRect bar = proxyOf(*m_view)->geometry().toRect();
        return QRect(m_view->mapTo(area.viewport(), bar.topLeft()), bar.size());
    };
    QScrollBar* down = area.verticalScrollBar();
    QScrollBar* right = area.horizontalScrollBar();
    for (const int value : {0, 100, 400, 500, down->maximum()}) {
        down->setValue(value);
        right->setValue(value);
        QVERIFY2(sight.contains(barInSight()), qPrintable(QString::number(value)));
    }
    // In its own place as soon as that can be seen.
    down->setValue(300);
    right->setValue(right->maximum() / 2);
    QCOMPARE(proxyOf(*m_view)->geometry(), QRectF(125, 425, 250, 50));
}

void TestLockableDataCollectionView::barFollowsTheVisiblePart()
{
    QScrollArea area;
    area.resize(320, 600);
    auto* page = new QWidget;
    page->setFixedSize(280, 900);
    area.setWidget(page);
    m_view->setParent(page);
    m_view->setGeometry(page->rect());
    m_view->show();
    area.show();
    QVERIFY(QTest::qWaitForWindowExposed(&area));
    QCOMPARE(proxyOf(*m_view)->geometry().top(), 425.0);
    // The page keeps its place and its size.
    area.resize(320, 300);
    const qreal seen = area.viewport()->height();
    QCOMPARE(proxyOf(*m_view)->geometry().bottom(), seen);
}

SCN_TEST(TestLockableDataCollectionView, QApplication)
#include "test_lockabledatacollectionview.moc"
