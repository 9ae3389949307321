#include "overlay/loadingview.h"
#include "support/eventcounter.h"
#include "support/testprogram.h"
#include "support/timerhand.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <memory>

namespace {

constexpr int kBusy = 0;
constexpr int kRecovery = 1;

const QString kLoadingText = QStringLiteral("正在加载，请稍等...");
const QString kRecoveryText = QStringLiteral("应用程序将在恢复通信时与仪器同步。");
const QColor kRing(153, 153, 153);

QLabel* labelOf(const LoadingView& view, const QString& text)
{
    for (QLabel* label : view.findChildren<QLabel*>()) {
        if (label->text() == text) {
            return label;
        }
    }
    return nullptr;
}

QPushButton* buttonOf(const LoadingView& view)
{
    return view.findChild<QPushButton*>();
}

/// The point on the circle around the ring's centre, at an angle counted anticlockwise from three
/// o'clock, before the ring has turned.
QPoint onRing(const LoadingView& view, double radius, double degrees)
{
    const double angle = degrees * M_PI / 180;
    return QPointF(view.width() * 0.5 + radius * std::cos(angle),
                   view.height() * 0.5 - 20 - radius * std::sin(angle))
        .toPoint();
}

bool isRing(const QImage& image, const QPoint& place)
{
    return image.pixelColor(place) == kRing;
}

} // namespace

class TestLoadingView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void coversItsParentHiddenAtFirst();
    void busyFormHasItsTextOnly();
    void recoveryFormHasTextButtonAndHiddenLabel();
    void worksWithoutAParent();
    void verySmallParentIsHarmless_data();
    void verySmallParentIsHarmless();
    void showLoadingCoversAndTurns();
    void groundIsFilled();
    void ringsAreSixDashes();
    void penIsFourPixelsWide();
    void ringTurnsByTwelveDegreesAStep();
    void stopLoadingHidesAndStandsStill();
    void recoveryFormWaitsForTheUser();
    void recoveryClickTurnsToTheBusyForm();
    void recoveryClickCannotComeTwice();
    void stopLoadingRestoresTheRecoveryForm();
    void showLoadingAfterAFailedRecoveryOffersTheButtonAgain();
    void controlsArePlaced_data();
    void controlsArePlaced();
    void followsItsParentsSize();
    void recoveryTextGrowsWithTheParent();
    void loadingTextIsReplacedAndCentred();
    void startSpinningDrawsTheRing();
    void coversItsParentUnderAStyleSheetThatDrawsFrames();
    void raisedWhenShown();
    void keysDoNotReachWhatIsCovered();
    void focusComesBackToAnUnfinishedEdit();
    void focusComesBackFromUnderTwoViews_data();
    void focusComesBackFromUnderTwoViews();
    void shownWithItsWindowTakesTheFocus();
    void tabStaysOnTheView();
    void recoveryButtonWorksByKeyboard();
    void wheelDoesNotReachWhatIsCovered();
    void openListOfWhatIsCoveredCloses();

private:
    void type(Qt::Key key) const;

    std::unique_ptr<QWidget> m_parent;
};

void TestLoadingView::init()
{
    m_parent = std::make_unique<QWidget>();
    m_parent->resize(400, 400);
    m_parent->show();
    QVERIFY(QTest::qWaitForWindowActive(m_parent.get()));
}

void TestLoadingView::cleanup()
{
    m_parent.reset();
}

void TestLoadingView::coversItsParentHiddenAtFirst()
{
    const LoadingView view(kBusy, m_parent.get());
    QVERIFY(view.isHidden());
    QCOMPARE(view.geometry(), m_parent->rect());
    QVERIFY(view.windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(!view.isWindow());
    QVERIFY(view.testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(view.styleSheet(), QStringLiteral("background: transparent;"));
}

void TestLoadingView::busyFormHasItsTextOnly()
{
    const LoadingView view(kBusy, m_parent.get());
    const QLabel* label = labelOf(view, kLoadingText);
    QVERIFY(label);
    QVERIFY(!label->isHidden());
    QCOMPARE(
        label->styleSheet(),
        QStringLiteral("QLabel{ color: white; font: 14px '微软雅黑'; background:transparent; }"));
    QCOMPARE(label->alignment(), Qt::Alignment(Qt::AlignCenter));
    QCOMPARE(view.findChildren<QLabel*>().size(), 1);
    QVERIFY(!buttonOf(view));
}

void TestLoadingView::recoveryFormHasTextButtonAndHiddenLabel()
{
    const LoadingView view(kRecovery, m_parent.get());
    const QLabel* label = labelOf(view, kRecoveryText);
    QVERIFY(label);
    QVERIFY(!label->isHidden());
    QVERIFY(label->wordWrap());
    QCOMPARE(label->alignment(), Qt::Alignment(Qt::AlignCenter));
    QCOMPARE(label->styleSheet(),
             QStringLiteral("QLabel{ color: white; font: 14px '微软雅黑'; background:transparent; "
                            "text-align: center; }"));
    QVERIFY(buttonOf(view));
    QVERIFY(!buttonOf(view)->isHidden());
    QCOMPARE(buttonOf(view)->text(), QStringLiteral("恢复"));
    QCOMPARE(
        buttonOf(view)->styleSheet(),
        QStringLiteral("QPushButton{ color: white; background-color: #333333; border: 1px solid "
                       "#666666; font: 14px '微软雅黑'; padding: 6px 12px; border-radius: 4px; } "
                       "QPushButton:hover{ background-color: #444444; }QPushButton:pressed{ "
                       "background-color: #555555; }"));
    QVERIFY(labelOf(view, kLoadingText));
    QVERIFY(labelOf(view, kLoadingText)->isHidden());
}

void TestLoadingView::worksWithoutAParent()
{
    for (const int mode : {kBusy, kRecovery}) {
        LoadingView view(mode);
        view.resize(300, 200);
        view.showLoading();
        QVERIFY(view.isVisible());
        QCOMPARE(view.size(), QSize(300, 200));
        // Without a parent's size to lay out the controls, showing does it.
        const QLabel* label = labelOf(view, mode == kBusy ? kLoadingText : kRecoveryText);
        QCOMPARE(label->x(), (300 - label->width()) / 2);
        QCOMPARE(label->y(), mode == kBusy ? 125 : 60);
        view.stopLoading();
        QVERIFY(!view.isVisible());
    }
}

void TestLoadingView::verySmallParentIsHarmless_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("ring vanishes") << QSize(7, 7);
    QTest::newRow("one pixel") << QSize(1, 1);
    QTest::newRow("a line") << QSize(300, 1);
}

void TestLoadingView::verySmallParentIsHarmless()
{
    QFETCH(QSize, size);
    QWidget host;
    QWidget small(&host);
    small.resize(size);
    host.show();
    for (const int mode : {kBusy, kRecovery}) {
        LoadingView view(mode, &small);
        view.showLoading();
        view.startSpinning();
        QCOMPARE(view.size(), size);
        const QImage image = view.grab().toImage();
        QCOMPARE(image.size(), size);
        view.stopLoading();
    }
}

void TestLoadingView::showLoadingCoversAndTurns()
{
    LoadingView view(kBusy, m_parent.get());
    m_parent->resize(320, 240);
    view.showLoading();
    QVERIFY(view.isVisible());
    QCOMPARE(view.geometry(), QRect(0, 0, 320, 240));
    QVERIFY(isRing(view.grab().toImage(), onRing(view, 30, 22)));
}

void TestLoadingView::groundIsFilled()
{
    m_parent->setStyleSheet(QStringLiteral("background: white;"));
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    // 40 at an opacity of 220 of 255, over white.
    const QColor ground = m_parent->grab().toImage().pixelColor(3, 3);
    QVERIFY(qAbs(ground.red() - 70) <= 1);
    QCOMPARE(ground.red(), ground.green());
    QCOMPARE(ground.red(), ground.blue());
}

void TestLoadingView::ringsAreSixDashes()
{
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    const QImage image = view.grab().toImage();
    // 400 x 400: radii 50 and 35.
    for (const int start : {0, 120, 240}) {
        QVERIFY(isRing(image, onRing(view, 50, start + 3)));
        QVERIFY(isRing(image, onRing(view, 50, start + 42)));
        QVERIFY(!isRing(image, onRing(view, 50, start + 60)));
        QVERIFY(!isRing(image, onRing(view, 50, start + 105)));
        QVERIFY(isRing(image, onRing(view, 35, start + 60 + 3)));
        QVERIFY(isRing(image, onRing(view, 35, start + 60 + 42)));
        QVERIFY(!isRing(image, onRing(view, 35, start)));
        QVERIFY(!isRing(image, onRing(view, 35, start + 45)));
        QVERIFY(!isRing(image, onRing(view, 42, start + 22)));
    }
}

void TestLoadingView::penIsFourPixelsWide()
{
    m_parent->setStyleSheet(QStringLiteral("background: white;"));
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    const QImage image = m_parent->grab().toImage();
    // A row ten pixels above the ring's centre cuts the first dash at 11.5 degrees. The edges are
    // blended with the background: their shares add up to the width.
    const int ground = image.pixelColor(3, 3).red();
    double width = 0;
    for (int x = 242; x < 258; ++x) {
        width += double(image.pixelColor(x, 170).red() - ground) / (kRing.red() - ground);
    }
    QVERIFY2(qAbs(width - 4.08) < 0.3, qPrintable(QString::number(width)));
}

void TestLoadingView::ringTurnsByTwelveDegreesAStep()
{
    LoadingView view(kBusy, m_parent.get());
    const EventCounter counter(view.viewport(), QEvent::Paint);
    view.showLoading();
    QTimer* steps = view.findChild<QTimer*>();
    QVERIFY(steps->isActive());
    QCOMPARE(steps->interval(), 80);
    QVERIFY(!steps->isSingleShot());

    // Clockwise by whole steps; after ten of them the rings look the same again.
    const QImage first = view.grab().toImage();
    for (int step = 1; step < 10; ++step) {
        runOut(steps);
        const QImage turned = view.grab().toImage();
        const int angle = -12 * step;
        QVERIFY(turned != first);
        QVERIFY(isRing(turned, onRing(view, 50, angle + 3)));
        QVERIFY(isRing(turned, onRing(view, 50, angle + 42)));
        QVERIFY(!isRing(turned, onRing(view, 50, angle - 4)));
        QVERIFY(!isRing(turned, onRing(view, 50, angle + 49)));
        QVERIFY(isRing(turned, onRing(view, 35, angle + 82)));
    }
    // Each step is painted, and the timer drives them by itself.
    QCoreApplication::processEvents();
    const int before = counter.count();
    QTRY_VERIFY(counter.count() >= before + 2);
    const QImage turned = view.grab().toImage();
    QTRY_VERIFY(view.grab().toImage() != turned);
}

void TestLoadingView::stopLoadingHidesAndStandsStill()
{
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    const QTimer* steps = view.findChild<QTimer*>();
    QVERIFY(steps->isActive());
    view.stopLoading();
    QVERIFY(!view.isVisible());
    view.show();
    QVERIFY(!isRing(view.grab().toImage(), onRing(view, 50, 22)));
    // Nothing is left that would keep painting.
    QVERIFY(!steps->isActive());
    const EventCounter counter(view.viewport(), QEvent::Paint);
    QCoreApplication::processEvents();
    const int shown = counter.count();
    QCoreApplication::processEvents();
    QCOMPARE(counter.count(), shown);
}

void TestLoadingView::recoveryFormWaitsForTheUser()
{
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    QVERIFY(labelOf(view, kRecoveryText)->isVisible());
    QVERIFY(buttonOf(view)->isVisible());
    QVERIFY(!labelOf(view, kLoadingText)->isVisible());
    for (const int angle : {5, 22, 40, 125, 150, 245}) {
        QVERIFY(!isRing(view.grab().toImage(), onRing(view, 50, angle)));
    }
}

void TestLoadingView::recoveryClickTurnsToTheBusyForm()
{
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    bool turning = false;
    bool loading = false;
    int confirmed = 0;
    connect(&view, &LoadingView::confirmRequested, this, [&] {
        ++confirmed;
        turning = isRing(view.grab().toImage(), onRing(view, 50, 22));
        loading = labelOf(view, kLoadingText)->isVisible();
    });
    QTest::mouseClick(buttonOf(view), Qt::LeftButton);
    QCOMPARE(confirmed, 1);
    QVERIFY(turning);
    QVERIFY(loading);
    QVERIFY(!labelOf(view, kRecoveryText)->isVisible());
    QVERIFY(!buttonOf(view)->isVisible());
    const QImage first = view.grab().toImage();
    QTRY_VERIFY(view.grab().toImage() != first);
}

void TestLoadingView::recoveryClickCannotComeTwice()
{
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    QVERIFY(QTest::qWaitForWindowExposed(m_parent.get()));
    QSignalSpy confirmed(&view, &LoadingView::confirmRequested);
    const QPoint place = buttonOf(view)->mapTo(m_parent.get(), buttonOf(view)->rect().center());
    QTest::mouseClick(m_parent->windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseClick(m_parent->windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    QCOMPARE(confirmed.count(), 1);
}

void TestLoadingView::stopLoadingRestoresTheRecoveryForm()
{
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    QTest::mouseClick(buttonOf(view), Qt::LeftButton);
    view.stopLoading();
    QVERIFY(!view.isVisible());
    view.showLoading();
    QVERIFY(labelOf(view, kRecoveryText)->isVisible());
    QVERIFY(buttonOf(view)->isVisible());
    QVERIFY(!labelOf(view, kLoadingText)->isVisible());
    QVERIFY(!isRing(view.grab().toImage(), onRing(view, 50, 22)));
    QSignalSpy confirmed(&view, &LoadingView::confirmRequested);
    QTest::mouseClick(buttonOf(view), Qt::LeftButton);
    QCOMPARE(confirmed.count(), 1);
}

void TestLoadingView::showLoadingAfterAFailedRecoveryOffersTheButtonAgain()
{
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    QTest::mouseClick(buttonOf(view), Qt::LeftButton);
    // The recovery failed, and the view is shown again without having been stopped.
    view.hide();
    view.showLoading();
    QVERIFY(buttonOf(view)->isVisible());
    QVERIFY(labelOf(view, kRecoveryText)->isVisible());
    QVERIFY(!view.findChild<QTimer*>()->isActive());
    const QImage still = view.grab().toImage();
    QCoreApplication::processEvents();
    QCOMPARE(view.grab().toImage(), still);
}

void TestLoadingView::controlsArePlaced_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("square") << QSize(400, 400);
    QTest::newRow("wide") << QSize(1001, 333);
    QTest::newRow("narrow") << QSize(151, 403);
}

void TestLoadingView::controlsArePlaced()
{
    QFETCH(QSize, size);
    m_parent->resize(size);
    const int width = size.width();
    const int height = size.height();

    LoadingView busy(kBusy, m_parent.get());
    busy.showLoading();
    const QLabel* loading = labelOf(busy, kLoadingText);
    QCOMPARE(loading->size(), loading->sizeHint());
    QCOMPARE(loading->x(), (width - loading->width()) / 2);
    QCOMPARE(loading->y(), height / 2 + qMin(width, height) / 8);

    LoadingView recovery(kRecovery, m_parent.get());
    recovery.showLoading();
    const QLabel* label = labelOf(recovery, kRecoveryText);
    QVERIFY(label->width() <= int(width * 0.6));
    QCOMPARE(label->minimumWidth(), label->maximumWidth());
    QCOMPARE(label->x(), (width - label->width()) / 2);
    QCOMPARE(label->y(), int(height * 0.3));
    QCOMPARE(label->height(), label->heightForWidth(label->width()));
    const QPushButton* button = buttonOf(recovery);
    QCOMPARE(button->x(), (width - button->width()) / 2);
    QCOMPARE(button->y(), int(height * 0.5));
    QTest::mouseClick(buttonOf(recovery), Qt::LeftButton);
    QCOMPARE(labelOf(recovery, kLoadingText)->geometry(), loading->geometry());
}

void TestLoadingView::followsItsParentsSize()
{
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    m_parent->resize(640, 480);
    QTRY_COMPARE(view.geometry(), QRect(0, 0, 640, 480));
    const QLabel* label = labelOf(view, kLoadingText);
    QCOMPARE(label->x(), (640 - label->width()) / 2);
    QCOMPARE(label->y(), 240 + 60);
}

void TestLoadingView::recoveryTextGrowsWithTheParent()
{
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    const int wide = labelOf(view, kRecoveryText)->width();
    m_parent->resize(100, 400);
    QTRY_COMPARE(labelOf(view, kRecoveryText)->width(), 60);
    // Makes the label measure its text again while it is narrow, as a new style sheet does.
    labelOf(view, kRecoveryText)->setIndent(-1);
    m_parent->resize(400, 400);
    QTRY_COMPARE(labelOf(view, kRecoveryText)->width(), wide);
}

void TestLoadingView::loadingTextIsReplacedAndCentred()
{
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    const QString text = QStringLiteral("正在导出，请稍等，这可能需要几分钟...");
    view.setLoadingText(text);
    const QLabel* label = labelOf(view, text);
    QVERIFY(label);
    QCOMPARE(label->size(), label->sizeHint());
    QCOMPARE(label->x(), (400 - label->width()) / 2);
}

void TestLoadingView::startSpinningDrawsTheRing()
{
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    view.startSpinning();
    QVERIFY(isRing(view.grab().toImage(), onRing(view, 50, 22)));
}

void TestLoadingView::coversItsParentUnderAStyleSheetThatDrawsFrames()
{
    m_parent->setStyleSheet(
        QStringLiteral("QAbstractScrollArea { border: 1px solid red; padding: 2px; }"));
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    QCOMPARE(view.viewport()->geometry(), m_parent->rect());
    m_parent->resize(300, 200);
    QTRY_COMPARE(view.viewport()->geometry(), QRect(0, 0, 300, 200));
}

void TestLoadingView::raisedWhenShown()
{
    LoadingView view(kBusy, m_parent.get());
    QWidget later(m_parent.get());
    later.setGeometry(m_parent->rect());
    later.show();
    view.showLoading();
    QCOMPARE(m_parent->childAt(2, 2), view.viewport());
}

/// A key press, delivered to whatever has the focus in the parent's window.
void TestLoadingView::type(Qt::Key key) const
{
    QTest::keyClick(m_parent->windowHandle(), key);
}

void TestLoadingView::keysDoNotReachWhatIsCovered()
{
    QPushButton button(m_parent.get());
    button.show();
    button.setFocus();
    const QSignalSpy clicked(&button, &QPushButton::clicked);
    type(Qt::Key_Space);
    QCOMPARE(clicked.size(), 1);

    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    QVERIFY(!button.hasFocus());
    type(Qt::Key_Space);
    // The program may focus a covered control: that does not open it either.
    button.setFocus();
    type(Qt::Key_Space);
    QCOMPARE(clicked.size(), 1);

    view.stopLoading();
    QVERIFY(button.hasFocus());
    type(Qt::Key_Space);
    QCOMPARE(clicked.size(), 2);
}

void TestLoadingView::focusComesBackToAnUnfinishedEdit()
{
    QLineEdit edit(m_parent.get());
    edit.show();
    edit.setFocus();
    const QSignalSpy finished(&edit, &QLineEdit::editingFinished);
    type(Qt::Key_1);

    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    type(Qt::Key_2);
    QCOMPARE(edit.text(), QStringLiteral("1"));
    // A command sent under the cover would be the edit's last act before the recovery.
    QCOMPARE(finished.size(), 0);

    view.stopLoading();
    QVERIFY(edit.hasFocus());
    type(Qt::Key_3);
    QCOMPARE(edit.text(), QStringLiteral("13"));
    type(Qt::Key_Return);
    QCOMPARE(finished.size(), 1);
}

void TestLoadingView::focusComesBackFromUnderTwoViews_data()
{
    QTest::addColumn<bool>("lowerFirst");
    QTest::newRow("the lower one goes first") << true;
    QTest::newRow("the upper one goes first") << false;
}

void TestLoadingView::focusComesBackFromUnderTwoViews()
{
    QFETCH(bool, lowerFirst);
    QLineEdit edit(m_parent.get());
    edit.show();
    edit.setFocus();
    const QSignalSpy finished(&edit, &QLineEdit::editingFinished);
    type(Qt::Key_1);

    LoadingView busy(kBusy, m_parent.get());
    LoadingView recovery(kRecovery, m_parent.get());
    const QSignalSpy confirmed(&recovery, &LoadingView::confirmRequested);
    busy.showLoading();
    recovery.showLoading();
    LoadingView& first = lowerFirst ? busy : recovery;
    LoadingView& last = lowerFirst ? recovery : busy;
    first.stopLoading();
    type(Qt::Key_2);
    QCOMPARE(edit.text(), QStringLiteral("1"));
    QVERIFY(QApplication::focusWidget() == &last || last.isAncestorOf(QApplication::focusWidget()));
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), lowerFirst ? 1 : 0);

    last.stopLoading();
    QVERIFY(edit.hasFocus());
    type(Qt::Key_3);
    QCOMPARE(edit.text(), QStringLiteral("13"));
    QCOMPARE(finished.size(), 0);
    type(Qt::Key_Return);
    QCOMPARE(finished.size(), 1);
}

void TestLoadingView::shownWithItsWindowTakesTheFocus()
{
    QLineEdit edit(m_parent.get());
    edit.show();
    edit.setFocus();
    m_parent->hide();
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    m_parent->show();
    QVERIFY(QTest::qWaitForWindowActive(m_parent.get()));
    type(Qt::Key_1);
    QCOMPARE(edit.text(), QString());
    view.stopLoading();
    type(Qt::Key_2);
    QCOMPARE(edit.text(), QStringLiteral("2"));
}

void TestLoadingView::tabStaysOnTheView()
{
    QPushButton button(m_parent.get());
    button.show();
    button.setFocus();
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Tab}) {
        type(key);
        QVERIFY(buttonOf(view)->hasFocus());
    }
    // From a covered control, too, Tab leads to the button.
    button.setFocus();
    type(Qt::Key_Tab);
    QVERIFY(view.isAncestorOf(QApplication::focusWidget()));
}

void TestLoadingView::recoveryButtonWorksByKeyboard()
{
    QPushButton button(m_parent.get());
    button.show();
    button.setFocus();
    const QSignalSpy clicked(&button, &QPushButton::clicked);
    LoadingView view(kRecovery, m_parent.get());
    const QSignalSpy confirmed(&view, &LoadingView::confirmRequested);
    view.showLoading();
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 1);
    // The ring turns now, and nothing is left to press.
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 1);

    // The recovery has failed: the form is active again.
    view.stopLoading();
    view.showLoading();
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 2);
    view.showLoading();
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 3);

    view.stopLoading();
    QVERIFY(button.hasFocus());
    QCOMPARE(clicked.size(), 0);
}

void TestLoadingView::wheelDoesNotReachWhatIsCovered()
{
    QComboBox box(m_parent.get());
    box.addItems({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    box.setCurrentIndex(1);
    box.show();
    const auto turn = [this, &box] {
        const QPoint place = box.mapTo(m_parent.get(), box.rect().center());
        QWheelEvent event(place, m_parent->mapToGlobal(place), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(m_parent->windowHandle(), &event);
    };
    turn();
    QCOMPARE(box.currentIndex(), 2);
    box.setCurrentIndex(1);
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    turn();
    QCOMPARE(box.currentIndex(), 1);
    view.stopLoading();
    turn();
    QCOMPARE(box.currentIndex(), 2);
}

void TestLoadingView::openListOfWhatIsCoveredCloses()
{
    QComboBox box(m_parent.get());
    box.addItems({QStringLiteral("1"), QStringLiteral("2")});
    box.show();
    QTest::mouseClick(&box, Qt::LeftButton);
    QVERIFY(QApplication::activePopupWidget());
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    QVERIFY(!QApplication::activePopupWidget());
    QCOMPARE(box.currentIndex(), 0);
}

SCN_TEST(TestLoadingView, QApplication)
#include "test_loadingview.moc"
