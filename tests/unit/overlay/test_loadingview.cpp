#include "overlay/loadingview.h"
#include "support/eventcounter.h"
#include "support/picturedifference.h"
#include "support/testprogram.h"
#include "support/timerhand.h"

#include <QApplication>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>
#include <QRegion>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr int kBusy = 0;
constexpr int kRecovery = 1;

const QString kLoadingText = QStringLiteral("正在加载，请稍等...");
const QString kRecoveryText = QStringLiteral("应用程序将在恢复通信时与仪器同步。");
const QColor kRing(153, 153, 153);

/// Notes where a widget is painted.
class PaintedArea : public QObject
{
public:
    explicit PaintedArea(QWidget* watched) { watched->installEventFilter(this); }

    bool covers(const QRect& area) const { return QRegion(area).subtracted(m_area).isEmpty(); }
    void forget() { m_area = {}; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            m_area += static_cast<QPaintEvent*>(event)->region();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QRegion m_area;
};

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

/// The ground and the rings as they are to look before they have turned.
QImage pictureOf(const QSize& size, const QPointF& centre, int outer, int inner)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(image.rect(), QColor(40, 40, 40, 220));
    painter.setPen(QPen(kRing, 4.0, Qt::SolidLine, Qt::RoundCap, Qt::BevelJoin));
    for (const int start : {0, 120, 240}) {
        const QPointF outward(outer, outer);
        painter.drawArc(QRectF(centre - outward, centre + outward), 16 * start, 16 * 45);
        const QPointF inward(inner, inner);
        painter.drawArc(QRectF(centre - inward, centre + inward), 16 * (start + 60), 16 * 45);
    }
    return image;
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
    void ringVanishesInAVeryNarrowParent_data();
    void ringVanishesInAVeryNarrowParent();
    void ringComesAndGoesAtOnce();
    void showLoadingCoversAndTurns();
    void groundIsFilled();
    void ringsAreSixDashes();
    void penIsFourPixelsWide();
    void pictureHasTheseMeasures_data();
    void pictureHasTheseMeasures();
    void ringTurnsByTwelveDegreesAStep();
    void stopLoadingHidesAndStandsStill();
    void recoveryFormWaitsForTheUser();
    void recoveryClickTurnsToTheBusyForm();
    void recoveryClickCannotComeTwice();
    void stopLoadingRestoresTheRecoveryForm();
    void showLoadingAfterAFailedRecoveryOffersTheButtonAgain();
    void controlsArePlaced_data();
    void controlsArePlaced();
    void followsItsParentsSize_data();
    void followsItsParentsSize();
    void takesTheSizeItMissed();
    void recoveryTextGrowsWithTheParent();
    void loadingTextIsReplacedAndCentred();
    void startSpinningDrawsTheRing();
    void coversItsParentUnderAStyleSheetThatDrawsFrames();
    void raisedWhenShown();
    void raisedWhenItsWindowIsShown();
    void askedForAgainStaysUnderAnother();

private:
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
    QTest::newRow("a few pixels") << QSize(7, 7);
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

void TestLoadingView::ringVanishesInAVeryNarrowParent_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<bool>("vanishes");
    QTest::newRow("no radius") << 7 << true;
    QTest::newRow("a radius of one pixel") << 8 << false;
}

void TestLoadingView::ringVanishesInAVeryNarrowParent()
{
    QFETCH(int, width);
    QFETCH(bool, vanishes);
    QWidget host;
    host.resize(400, 400);
    QWidget narrow(&host);
    narrow.resize(width, 300);
    host.show();
    LoadingView view(kBusy, &narrow);
    view.showLoading();
    const QImage spinning = view.viewport()->grab().toImage();
    view.stopLoading();
    view.show();
    QCOMPARE(spinning == view.viewport()->grab().toImage(), vanishes);
}

/// In a window that is not the active one: there no change of the focus paints the view.
void TestLoadingView::ringComesAndGoesAtOnce()
{
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    QCoreApplication::processEvents();
    const QRect ring(onRing(view, 0, 0) - QPoint(50, 50), QSize(100, 100));
    PaintedArea painted(view.viewport());
    QTest::mouseClick(m_parent->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      buttonOf(view)->mapTo(m_parent.get(), buttonOf(view)->rect().center()));
    QVERIFY(!buttonOf(view)->isVisible());
    QCoreApplication::processEvents();
    QVERIFY(painted.covers(ring));
    painted.forget();
    view.findChild<QTimer*>()->blockSignals(true); // the turning of the ring paints it, too
    view.showLoading();
    QVERIFY(buttonOf(view)->isVisible());
    QCoreApplication::processEvents();
    QVERIFY(painted.covers(ring));
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
    const QImage image = m_parent->grab().toImage();
    for (const QPoint& place :
         {QPoint(0, 0), QPoint(200, 0), QPoint(399, 0), QPoint(0, 200), QPoint(399, 200),
          QPoint(0, 399), QPoint(200, 399), QPoint(399, 399), QPoint(200, 300)}) {
        const QColor ground = image.pixelColor(place);
        QVERIFY(qAbs(ground.red() - 70) <= 1);
        QCOMPARE(ground.red(), ground.green());
        QCOMPARE(ground.red(), ground.blue());
    }
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

void TestLoadingView::pictureHasTheseMeasures_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QPointF>("centre");
    QTest::addColumn<int>("outer");
    QTest::addColumn<int>("inner");
    QTest::newRow("wide") << QSize(320, 240) << QPointF(160, 100) << 30 << 21;
    QTest::newRow("high") << QSize(240, 320) << QPointF(120, 140) << 30 << 21;
    QTest::newRow("odd sizes, radius cut") << QSize(407, 415) << QPointF(203.5, 187.5) << 50 << 35;
    QTest::newRow("inner radius cut") << QSize(408, 500) << QPointF(204, 230) << 51 << 35;
}

void TestLoadingView::pictureHasTheseMeasures()
{
    QFETCH(const QSize, size);
    QFETCH(const QPointF, centre);
    QFETCH(const int, outer);
    QFETCH(const int, inner);
    m_parent->resize(size);
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    // Without the label, which is no child of the viewport.
    const QImage image = view.viewport()->grab().toImage();
    QCOMPARE(image.size(), size);
    const int most = largestDifference(image, pictureOf(size, centre, outer, inner));
    QVERIFY2(most <= 3, qPrintable(QString::number(most)));
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

    // Clockwise by whole steps; after ten of them the rings look the same again, after thirty they
    // have turned once.
    const QImage first = view.grab().toImage();
    QImage second;
    for (int step = 1; step < 10; ++step) {
        runOut(steps);
        const QImage turned = view.grab().toImage();
        if (step == 1) {
            second = turned;
        }
        const int angle = -12 * step;
        QVERIFY(turned != first);
        QVERIFY(isRing(turned, onRing(view, 50, angle + 3)));
        QVERIFY(isRing(turned, onRing(view, 50, angle + 42)));
        QVERIFY(!isRing(turned, onRing(view, 50, angle - 4)));
        QVERIFY(!isRing(turned, onRing(view, 50, angle + 49)));
        QVERIFY(isRing(turned, onRing(view, 35, angle + 82)));
    }
    for (int step = 10; step <= 30; ++step) {
        runOut(steps);
    }
    QCOMPARE(view.grab().toImage(), first);
    runOut(steps);
    QCOMPARE(view.grab().toImage(), second);
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
    for (int angle = 0; angle < 360; angle += 10) {
        QVERIFY(!isRing(still, onRing(view, 50, angle)));
        QVERIFY(!isRing(still, onRing(view, 35, angle)));
    }
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
    QLabel fresh(label->text(), m_parent.get());
    fresh.setStyleSheet(label->styleSheet());
    fresh.setWordWrap(true);
    fresh.ensurePolished();
    QCOMPARE(label->width(), std::min(int(width * 0.6), fresh.sizeHint().width()));
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

void TestLoadingView::followsItsParentsSize_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("clicked");
    QTest::newRow("busy") << kBusy << false;
    QTest::newRow("recovery") << kRecovery << false;
    QTest::newRow("recovery under way") << kRecovery << true;
}

void TestLoadingView::followsItsParentsSize()
{
    QFETCH(const int, mode);
    QFETCH(const bool, clicked);
    LoadingView view(mode, m_parent.get());
    view.showLoading();
    if (clicked) {
        QTest::mouseClick(buttonOf(view), Qt::LeftButton);
    }
    m_parent->resize(640, 480);
    QTRY_COMPARE(view.geometry(), QRect(0, 0, 640, 480));
    if (mode == kBusy || clicked) {
        const QLabel* label = labelOf(view, kLoadingText);
        QCOMPARE(label->x(), (640 - label->width()) / 2);
        QCOMPARE(label->y(), 240 + 60);
        return;
    }
    const QLabel* label = labelOf(view, kRecoveryText);
    QCOMPARE(label->x(), (640 - label->width()) / 2);
    QCOMPARE(label->y(), 144);
    QCOMPARE(buttonOf(view)->x(), (640 - buttonOf(view)->width()) / 2);
    QCOMPARE(buttonOf(view)->y(), 240);
}

void TestLoadingView::takesTheSizeItMissed()
{
    LoadingView view(kBusy, m_parent.get());
    m_parent->resize(320, 240);
    view.show();
    QCOMPARE(view.geometry(), QRect(0, 0, 320, 240));
    view.hide();
    // A hidden parent does not tell its new size before it is shown.
    m_parent->hide();
    m_parent->resize(300, 200);
    view.showLoading();
    QCOMPARE(view.geometry(), QRect(0, 0, 300, 200));
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
    QCoreApplication::processEvents();
    const PaintedArea painted(view.viewport());
    view.startSpinning();
    view.findChild<QTimer*>()->blockSignals(true); // the turning of the ring paints it, too
    QCoreApplication::processEvents();
    QVERIFY(painted.covers(QRect(onRing(view, 0, 0) - QPoint(50, 50), QSize(100, 100))));
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

/// As at the start of the program, which makes the pages below a view that is already up.
void TestLoadingView::raisedWhenItsWindowIsShown()
{
    m_parent->hide();
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    QWidget later(m_parent.get());
    later.setGeometry(m_parent->rect());
    m_parent->show();
    QCOMPARE(m_parent->childAt(2, 2), view.viewport());
}

void TestLoadingView::askedForAgainStaysUnderAnother()
{
    LoadingView busy(kBusy, m_parent.get());
    LoadingView recovery(kRecovery, m_parent.get());
    const QSignalSpy confirmed(&recovery, &LoadingView::confirmRequested);
    busy.showLoading();
    recovery.showLoading();
    busy.showLoading();
    QCOMPARE(m_parent->childAt(2, 2), recovery.viewport());
    const QPoint place = buttonOf(recovery)->mapTo(m_parent.get(), QPoint(5, 5));
    QTest::mouseClick(m_parent->windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    QCOMPARE(confirmed.size(), 1);
}

SCN_TEST(TestLoadingView, QApplication)
#include "test_loadingview.moc"
