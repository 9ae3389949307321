#include "overlay/lockabledatacollectionview.h"
#include "overlay/windowlockmanager.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QGraphicsProxyWidget>
#include <QLineEdit>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <memory>

/// A page that also reports the pointer by signals.
class SignallingPage : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SignallingPage)

public:
    using QWidget::QWidget;

signals:
    void entered();
    void left();
};

namespace {

using namespace std::chrono_literals;

constexpr scn::LockTiming kTiming{40ms, 30ms};

void send(QWidget& widget, QEvent::Type type)
{
    QEvent event(type);
    QCoreApplication::sendEvent(&widget, &event);
}

/// The overlay on the page, if any.
LockableDataCollectionView* overlayOn(const QWidget& page)
{
    auto* view = page.findChild<LockableDataCollectionView*>();
    return view && view->isVisible() ? view : nullptr;
}

QGraphicsProxyWidget* barOf(const LockableDataCollectionView& view)
{
    for (QGraphicsItem* item : view.scene()->items()) {
        if (auto* proxy = qgraphicsitem_cast<QGraphicsProxyWidget*>(item)) {
            return proxy;
        }
    }
    return nullptr;
}

void press(LockableDataCollectionView& view)
{
    QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::NoModifier,
                      view.mapFromScene(barOf(view)->geometry().center()));
}

void release(LockableDataCollectionView& view)
{
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, Qt::NoModifier,
                        view.mapFromScene(barOf(view)->geometry().center()));
}

} // namespace

class TestWindowLockManager : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void enteringShowsNothingWhileLockingIsOff();
    void enteringCoversThePageWhileLockingIsOn();
    void leavingHidesTheOverlay();
    void leavingAnotherPageThanTheCurrentOneKeepsTheOverlay();
    void pageThatWasLeftIsNotCoveredAtOnce();
    void nextPageGainsTheOneOverlay();
    void unwatchedPageIsNotCovered();
    void nullAndKnownPagesAreIgnored();
    void pointerAlreadyOnAPageIsCoveredAtOnce();
    void switchingOffHidesAndLocksAnew();
    void lockViewHidesUntilTheNextEntry();
    void heldBarUnlocksAndHides();
    void shortPressUnlocksNothing();
    void unlockedPageIsNotCoveredUntilTheNextLock();
    void pointerThatLeavesDuringTheHoldStillUnlocks();
    void pointerThatLeavesDuringTheFadeStillUnlocks();
    void lockingStaysOnAfterAnUnlock();
    void overlayIsMadeAnewAfterItsPageDied();
    void deletedPagesAreForgotten();
    void managersShareTheOverlay();
    void newManagerHidesTheOverlay();
    void slotsTakeThePageFromTheSender();
    void keysDoNotReachALockedPage();
    void tabLeadsPastLockedPages();
    void wheelDoesNotReachALockedPage();

private:
    std::unique_ptr<QWidget> m_window;
    SignallingPage* m_first = nullptr;
    SignallingPage* m_second = nullptr;
    std::unique_ptr<WindowLockManager> m_manager;
};

void TestWindowLockManager::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->resize(600, 400);
    m_first = new SignallingPage(m_window.get());
    m_first->setGeometry(10, 20, 250, 300);
    m_second = new SignallingPage(m_window.get());
    m_second->setGeometry(300, 20, 250, 350);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_manager = std::make_unique<WindowLockManager>(nullptr, kTiming);
    m_manager->registerWindow(m_first);
    m_manager->registerWindow(m_second);
    m_manager->lockView();
}

void TestWindowLockManager::cleanup()
{
    m_manager.reset();
    m_window.reset();
}

void TestWindowLockManager::enteringShowsNothingWhileLockingIsOff()
{
    send(*m_first, QEvent::Enter);
    QVERIFY(!overlayOn(*m_first));
}

void TestWindowLockManager::enteringCoversThePageWhileLockingIsOn()
{
    m_manager->setLockEnabled(true);
    QVERIFY(!overlayOn(*m_first));
    auto* later = new QWidget(m_first);
    later->setGeometry(m_first->rect());
    later->show();
    send(*m_first, QEvent::Enter);
    QVERIFY(overlayOn(*m_first));
    QCOMPARE(overlayOn(*m_first)->geometry(), m_first->rect());
    // Above everything on the page.
    QCOMPARE(m_first->childAt(125, 10), overlayOn(*m_first)->viewport());
    later->raise();
    send(*m_first, QEvent::Enter);
    QCOMPARE(m_first->childAt(125, 10), overlayOn(*m_first)->viewport());
}

void TestWindowLockManager::leavingHidesTheOverlay()
{
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    QVERIFY(overlayOn(*m_first));
    send(*m_first, QEvent::Leave);
    QVERIFY(!overlayOn(*m_first));
}

void TestWindowLockManager::leavingAnotherPageThanTheCurrentOneKeepsTheOverlay()
{
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    send(*m_second, QEvent::Leave);
    QVERIFY(overlayOn(*m_first));
}

void TestWindowLockManager::pageThatWasLeftIsNotCoveredAtOnce()
{
    send(*m_first, QEvent::Enter);
    send(*m_first, QEvent::Leave);
    m_manager->setLockEnabled(true);
    QVERIFY(!overlayOn(*m_first));
}

void TestWindowLockManager::nextPageGainsTheOneOverlay()
{
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    const LockableDataCollectionView* view = overlayOn(*m_first);
    send(*m_first, QEvent::Leave);
    send(*m_second, QEvent::Enter);
    QVERIFY(!overlayOn(*m_first));
    QCOMPARE(overlayOn(*m_second), view);
    QCOMPARE(view->geometry(), m_second->rect());
}

void TestWindowLockManager::unwatchedPageIsNotCovered()
{
    QWidget other(m_window.get());
    other.show();
    m_manager->setLockEnabled(true);
    // Even with a filter on an unwatched widget, only the events of pages count.
    other.installEventFilter(m_manager.get());
    send(other, QEvent::Enter);
    QVERIFY(!overlayOn(other));
}

void TestWindowLockManager::nullAndKnownPagesAreIgnored()
{
    m_manager->registerWindow(nullptr);
    m_manager->registerWindow(m_first);
    QVERIFY(m_first->hasMouseTracking());
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    QVERIFY(overlayOn(*m_first));
}

void TestWindowLockManager::pointerAlreadyOnAPageIsCoveredAtOnce()
{
    send(*m_second, QEvent::Enter);
    QVERIFY(!overlayOn(*m_second));
    m_manager->setLockEnabled(true);
    QVERIFY(overlayOn(*m_second));
    QCOMPARE(overlayOn(*m_second)->geometry(), m_second->rect());
}

void TestWindowLockManager::switchingOffHidesAndLocksAnew()
{
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    LockableDataCollectionView* view = overlayOn(*m_first);
    QSignalSpy locked(view, &LockableDataCollectionView::locked);
    m_manager->setLockEnabled(false);
    QCOMPARE(locked.count(), 1);
    QVERIFY(view->isLocked());
    QVERIFY(!overlayOn(*m_first));
}

void TestWindowLockManager::lockViewHidesUntilTheNextEntry()
{
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    m_manager->lockView();
    QVERIFY(!overlayOn(*m_first));
    send(*m_first, QEvent::Enter);
    QVERIFY(overlayOn(*m_first));
}

void TestWindowLockManager::heldBarUnlocksAndHides()
{
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    LockableDataCollectionView* view = overlayOn(*m_first);
    QElapsedTimer held;
    held.start();
    press(*view);
    QTRY_COMPARE(unlocked.count(), 1);
    QVERIFY2(held.elapsed() >= 70, qPrintable(QString::number(held.elapsed())));
    QVERIFY(!overlayOn(*m_first));
    release(*view);
    QCOMPARE(unlocked.count(), 1);
}

void TestWindowLockManager::shortPressUnlocksNothing()
{
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    press(*overlayOn(*m_first));
    const QTimer* hold = overlayOn(*m_first)->findChild<QTimer*>();
    QVERIFY(hold->isActive());
    release(*overlayOn(*m_first));
    QVERIFY(!hold->isActive());
    QVERIFY(!overlayOn(*m_first)->findChild<QPropertyAnimation*>());
    QCOMPARE(unlocked.count(), 0);
    QVERIFY(overlayOn(*m_first));
}

void TestWindowLockManager::unlockedPageIsNotCoveredUntilTheNextLock()
{
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    overlayOn(*m_first)->globalUnlock();
    QTRY_COMPARE(unlocked.count(), 1);
    send(*m_first, QEvent::Leave);
    send(*m_first, QEvent::Enter);
    QVERIFY(!overlayOn(*m_first));
    m_manager->setLockEnabled(true);
    QVERIFY(!overlayOn(*m_first));
    m_manager->lockView();
    send(*m_second, QEvent::Enter);
    QVERIFY(overlayOn(*m_second));
}

void TestWindowLockManager::pointerThatLeavesDuringTheHoldStillUnlocks()
{
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    press(*overlayOn(*m_first));
    send(*m_first, QEvent::Leave);
    QVERIFY(!overlayOn(*m_first));
    QTRY_COMPARE(unlocked.count(), 1);
}

void TestWindowLockManager::pointerThatLeavesDuringTheFadeStillUnlocks()
{
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    overlayOn(*m_first)->globalUnlock();
    m_window->findChild<QPropertyAnimation*>()->setCurrentTime(10);
    send(*m_first, QEvent::Leave);
    QVERIFY(!overlayOn(*m_first));
    QCOMPARE(unlocked.count(), 0);
    QTRY_COMPARE(unlocked.count(), 1);
}

void TestWindowLockManager::lockingStaysOnAfterAnUnlock()
{
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    overlayOn(*m_first)->globalUnlock();
    QTRY_COMPARE(unlocked.count(), 1);
    m_manager->lockView();
    send(*m_first, QEvent::Enter);
    QVERIFY(overlayOn(*m_first));
}

void TestWindowLockManager::overlayIsMadeAnewAfterItsPageDied()
{
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    QVERIFY(overlayOn(*m_first));
    delete m_first;
    m_manager->lockView();
    send(*m_second, QEvent::Enter);
    QVERIFY(overlayOn(*m_second));
    overlayOn(*m_second)->globalUnlock();
    QTRY_COMPARE(unlocked.count(), 1);
    QVERIFY(!overlayOn(*m_second));
}

void TestWindowLockManager::deletedPagesAreForgotten()
{
    send(*m_first, QEvent::Enter);
    delete m_first;
    m_manager->setLockEnabled(true);
    m_manager->setLockEnabled(false);
    m_manager->setLockEnabled(true);
    send(*m_second, QEvent::Enter);
    QVERIFY(overlayOn(*m_second));
}

void TestWindowLockManager::managersShareTheOverlay()
{
    WindowLockManager other(nullptr, kTiming);
    QWidget page(m_window.get());
    page.setGeometry(0, 0, 200, 200);
    page.show();
    other.registerWindow(&page);
    other.setLockEnabled(true);
    m_manager->setLockEnabled(true);
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    QSignalSpy otherUnlocked(&other, &WindowLockManager::unlocked);

    send(page, QEvent::Enter);
    const LockableDataCollectionView* view = overlayOn(page);
    QVERIFY(view);
    send(*m_first, QEvent::Enter);
    QCOMPARE(overlayOn(*m_first), view);
    QVERIFY(!overlayOn(page));

    overlayOn(*m_first)->globalUnlock();
    QTRY_COMPARE(unlocked.count(), 1);
    QCOMPARE(otherUnlocked.count(), 1);
}

void TestWindowLockManager::newManagerHidesTheOverlay()
{
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    QVERIFY(overlayOn(*m_first));
    const WindowLockManager other;
    QVERIFY(!overlayOn(*m_first));
}

void TestWindowLockManager::slotsTakeThePageFromTheSender()
{
    connect(m_second, SIGNAL(entered()), m_manager.get(), SLOT(onWindowEntered()));
    connect(m_second, SIGNAL(left()), m_manager.get(), SLOT(onWindowLeft()));
    emit m_second->entered();
    QVERIFY(!overlayOn(*m_second));
    m_manager->setLockEnabled(true);
    QVERIFY(overlayOn(*m_second));
    emit m_second->left();
    QVERIFY(!overlayOn(*m_second));
    emit m_second->entered();
    QVERIFY(overlayOn(*m_second));
}

void TestWindowLockManager::keysDoNotReachALockedPage()
{
    QLineEdit edit(m_first);
    edit.show();
    edit.setFocus();
    QLineEdit outside(m_window.get());
    outside.show();
    const auto type = [this](Qt::Key key) { QTest::keyClick(m_window->windowHandle(), key); };
    type(Qt::Key_1);
    m_manager->setLockEnabled(true);
    send(*m_first, QEvent::Enter);
    type(Qt::Key_2);
    QCOMPARE(edit.text(), QStringLiteral("1"));
    // The focus stays when the pointer leaves, for example to a chart.
    send(*m_first, QEvent::Leave);
    type(Qt::Key_3);
    QCOMPARE(edit.text(), QStringLiteral("1"));
    outside.setFocus();
    type(Qt::Key_4);
    QCOMPARE(outside.text(), QStringLiteral("4"));

    // The bar has been held: the user has the page again.
    QSignalSpy unlocked(m_manager.get(), &WindowLockManager::unlocked);
    send(*m_first, QEvent::Enter);
    overlayOn(*m_first)->globalUnlock();
    QTRY_COMPARE(unlocked.count(), 1);
    edit.setFocus();
    type(Qt::Key_5);
    QCOMPARE(edit.text(), QStringLiteral("15"));
}

void TestWindowLockManager::tabLeadsPastLockedPages()
{
    QLineEdit before(m_window.get());
    QLineEdit first(m_first);
    QLineEdit second(m_first);
    QLineEdit after(m_window.get());
    for (QLineEdit* edit : {&before, &first, &second, &after}) {
        edit->show();
    }
    const auto type = [this](Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(m_window->windowHandle(), key, modifiers);
    };
    m_manager->setLockEnabled(true);
    first.setFocus();
    type(Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), &after);
    second.setFocus();
    type(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(QApplication::focusWidget(), &before);
}

void TestWindowLockManager::wheelDoesNotReachALockedPage()
{
    QScrollArea area(m_window.get());
    area.setGeometry(0, 0, 200, 100);
    auto* page = new QWidget;
    page->setFixedSize(180, 400);
    auto* box = new QSpinBox(page);
    box->setGeometry(0, 0, 100, 40);
    area.setWidget(page);
    area.show();
    m_manager->registerWindow(page);
    const auto turn = [this] {
        const QPoint place(20, 20);
        QWheelEvent event(place, m_window->mapToGlobal(place), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(m_window->windowHandle(), &event);
    };
    box->setValue(5);
    turn();
    QCOMPARE(box->value(), 4);
    m_manager->setLockEnabled(true);
    turn();
    QCOMPARE(box->value(), 4);
    // The page scrolls all the same.
    QVERIFY(area.verticalScrollBar()->value() > 0);
    area.verticalScrollBar()->setValue(0);
    send(*page, QEvent::Enter);
    QVERIFY(overlayOn(*page));
    turn();
    QCOMPARE(box->value(), 4);
    QVERIFY(area.verticalScrollBar()->value() > 0);
}

SCN_TEST(TestWindowLockManager, QApplication)
#include "test_windowlockmanager.moc"
