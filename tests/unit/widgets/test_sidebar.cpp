#include "resources/resources.h"
#include "support/animationclock.h"
#include "support/testprogram.h"
#include "widgets/customsidebutton.h"
#include "widgets/rotatedlabel.h"
#include "widgets/sidebar.h"

#include <QHBoxLayout>
#include <QPropertyAnimation>
#include <QTest>

#include <memory>

using namespace std::chrono_literals;

class TestSideBar : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void newBarShowsOnlyTheStripWithItsTitleTurned();
    void layoutsHoldThePanelAndThenTheStrip();
    void openWidthSetsTheLimits();
    void openWidthBelowTheStripIsTheStrip();
    void sideChoosesTheArrows_data();
    void sideChoosesTheArrows();
    void animationsSlideTheMinimumWidth();
    void clickOnTheStripOpens();
    void clickOnTheHeaderCloses();
    void secondClickOnTheStripWhileOpeningDoesNothing();
    void secondClickOnTheHeaderWhileClosingDoesNothing();
    void clickOnTheHeaderWhileOpeningCloses();
    void clickOnTheStripWhileOpenOrClosingDoesNothing();
    void clickOnTheHeaderWhileShutDoesNothing();
    void wideContentDoesNotHoldUpTheSlide();
    void openBarTakesANewWidthAtOnce();

private:
    CustomSideButton* strip() const { return buttonWithVerticalText(true); }
    CustomSideButton* header() const { return buttonWithVerticalText(false); }
    CustomSideButton* buttonWithVerticalText(bool vertical) const;
    QPropertyAnimation* runningAnimation() const;
    void open();

    std::unique_ptr<AnimationClock> m_clock;
    std::unique_ptr<QWidget> m_window;
    SideBar* m_bar = nullptr;
};

CustomSideButton* TestSideBar::buttonWithVerticalText(bool vertical) const
{
    for (CustomSideButton* button : m_bar->findChildren<CustomSideButton*>()) {
        if (button->findChild<RotatedLabel*>()->isVertical() == vertical) {
            return button;
        }
    }
    return nullptr;
}

QPropertyAnimation* TestSideBar::runningAnimation() const
{
    for (QPropertyAnimation* animation : m_bar->findChildren<QPropertyAnimation*>()) {
        if (animation->state() == QAbstractAnimation::Running) {
            return animation;
        }
    }
    return nullptr;
}

void TestSideBar::open()
{
    QTest::mouseClick(strip(), Qt::LeftButton);
    m_clock->pass(300ms);
    QVERIFY(!runningAnimation());
    QCOMPARE(m_bar->width(), 80);
}

void TestSideBar::initTestCase()
{
    initResources();
}

void TestSideBar::init()
{
    m_clock = std::make_unique<AnimationClock>();
    m_window = std::make_unique<QWidget>();
    m_window->resize(400, 300);
    auto* layout = new QHBoxLayout(m_window.get());
    m_bar = new SideBar;
    m_bar->setSide(false);
    m_bar->setOpenWidth(80);
    m_bar->setTitle(QStringLiteral("小工具"));
    layout->addWidget(m_bar);
    layout->addStretch();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestSideBar::cleanup()
{
    m_window.reset();
    m_clock.reset();
}

void TestSideBar::newBarShowsOnlyTheStripWithItsTitleTurned()
{
    QCOMPARE(m_bar->width(), 20);
    QVERIFY(strip()->isVisible());
    QCOMPARE(strip()->width(), 20);
    QVERIFY(!header()->isVisible());
    QVERIFY(!m_bar->content()->isVisible());
    QCOMPARE(strip()->findChild<RotatedLabel*>()->text(), QStringLiteral("小工具"));
    QCOMPARE(header()->findChild<RotatedLabel*>()->text(), QStringLiteral("小工具"));
    QCOMPARE(m_bar->content()->styleSheet(),
             QStringLiteral("background-color: rgb(68, 68, 68); border: none;"));
    QVERIFY(m_bar->testAttribute(Qt::WA_StyledBackground));
    QVERIFY(m_bar->windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(!m_bar->isWindow());
    QCOMPARE(m_bar->sizePolicy(), QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding));
}

void TestSideBar::layoutsHoldThePanelAndThenTheStrip()
{
    const auto isPlain = [](const QLayout* layout) {
        return layout->spacing() == 0 && layout->contentsMargins() == QMargins();
    };
    const auto* main = qobject_cast<QHBoxLayout*>(m_bar->layout());
    QVERIFY(main && isPlain(main));
    QCOMPARE(main->count(), 2);
    auto* panel = qobject_cast<QVBoxLayout*>(main->itemAt(0)->layout());
    QVERIFY(panel && isPlain(panel));
    QCOMPARE(panel->count(), 2);
    QCOMPARE(panel->itemAt(0)->widget(), header());
    QCOMPARE(panel->itemAt(1)->widget(), m_bar->content());
    auto* column = qobject_cast<QVBoxLayout*>(main->itemAt(1)->layout());
    QVERIFY(column && isPlain(column));
    QCOMPARE(column->count(), 1);
    QCOMPARE(column->itemAt(0)->widget(), strip());

    QCOMPARE(header()->sizePolicy(), QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed));
    QCOMPARE(m_bar->content()->sizePolicy(),
             QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding));
    QCOMPARE(strip()->sizePolicy(), QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding));
    QCOMPARE(strip()->minimumWidth(), 20);
    QCOMPARE(strip()->maximumWidth(), 20);
}

void TestSideBar::openWidthSetsTheLimits()
{
    QCOMPARE(m_bar->minimumWidth(), 20);
    QCOMPARE(m_bar->maximumWidth(), 80);
    QCOMPARE(m_bar->content()->maximumWidth(), 60);
    const SideBar fresh;
    QCOMPARE(fresh.maximumWidth(), 100);
}

void TestSideBar::openWidthBelowTheStripIsTheStrip()
{
    m_bar->setOpenWidth(5);
    QCOMPARE(m_bar->maximumWidth(), 20);
    QCOMPARE(m_bar->content()->maximumWidth(), 0);
}

void TestSideBar::sideChoosesTheArrows_data()
{
    QTest::addColumn<bool>("side");
    QTest::addColumn<QString>("headerArrow");
    QTest::addColumn<QString>("stripArrow");
    QTest::newRow("false") << false << ":/dark/arrow_left.png"
                           << ":/dark/arrow_right.png";
    QTest::newRow("true") << true << ":/dark/arrow_right.png"
                          << ":/dark/arrow_left.png";
}

void TestSideBar::sideChoosesTheArrows()
{
    QFETCH(bool, side);
    QFETCH(QString, headerArrow);
    QFETCH(QString, stripArrow);
    m_bar->setSide(side);
    const auto shown = [](const CustomSideButton* button) {
        for (const QLabel* label : button->findChildren<QLabel*>()) {
            if (!qobject_cast<const RotatedLabel*>(label)) {
                return label->pixmap(Qt::ReturnByValue).toImage();
            }
        }
        return QImage();
    };
    const auto scaled = [](const QString& file) {
        return QPixmap(file)
            .scaled(15, 15, Qt::KeepAspectRatio, Qt::SmoothTransformation)
            .toImage();
    };
    QVERIFY(!shown(header()).isNull());
    QCOMPARE(shown(header()), scaled(headerArrow));
    QCOMPARE(shown(strip()), scaled(stripArrow));
    QCOMPARE(qobject_cast<QBoxLayout*>(header()->layout())->direction(), QBoxLayout::LeftToRight);
    QCOMPARE(qobject_cast<QBoxLayout*>(strip()->layout())->direction(), QBoxLayout::TopToBottom);
}

void TestSideBar::animationsSlideTheMinimumWidth()
{
    const QList<QPropertyAnimation*> animations = m_bar->findChildren<QPropertyAnimation*>();
    QCOMPARE(animations.size(), 2);
    for (const QPropertyAnimation* animation : animations) {
        QCOMPARE(animation->propertyName(), QByteArrayLiteral("minimumWidth"));
        QCOMPARE(animation->targetObject(), m_bar);
        QCOMPARE(animation->duration(), 300);
        QCOMPARE(animation->easingCurve().type(), QEasingCurve::InOutQuad);
    }
}

void TestSideBar::clickOnTheStripOpens()
{
    QTest::mouseClick(strip(), Qt::LeftButton);
    QVERIFY(m_bar->content()->isVisible());
    QVERIFY(header()->isVisible());
    QVERIFY(!strip()->isVisible());
    QVERIFY(runningAnimation());
    QCOMPARE(runningAnimation()->startValue().toInt(), 20);
    QCOMPARE(runningAnimation()->endValue().toInt(), 80);
    m_clock->pass(300ms);
    QVERIFY(!runningAnimation());
    QCOMPARE(m_bar->width(), 80);
    QVERIFY(m_bar->content()->isVisible());
}

void TestSideBar::clickOnTheHeaderCloses()
{
    open();
    QTest::mouseClick(header(), Qt::LeftButton);
    QVERIFY(runningAnimation());
    QCOMPARE(runningAnimation()->startValue().toInt(), 80);
    QCOMPARE(runningAnimation()->endValue().toInt(), 20);
    QVERIFY(m_bar->content()->isVisible());
    m_clock->pass(299ms);
    QVERIFY(!strip()->isVisible());
    m_clock->pass(1ms);
    QVERIFY(strip()->isVisible());
    QVERIFY(!m_bar->content()->isVisible());
    QVERIFY(!header()->isVisible());
    QCOMPARE(m_bar->width(), 20);
}

void TestSideBar::secondClickOnTheStripWhileOpeningDoesNothing()
{
    m_bar->onHideBtnClicked();
    m_clock->pass(60ms);
    QVERIFY(runningAnimation());
    QCOMPARE(runningAnimation()->currentTime(), 60);
    m_bar->onHideBtnClicked();
    QVERIFY(runningAnimation());
    QCOMPARE(runningAnimation()->currentTime(), 60);
    m_clock->pass(240ms);
    QCOMPARE(m_bar->width(), 80);
}

void TestSideBar::secondClickOnTheHeaderWhileClosingDoesNothing()
{
    open();
    QTest::mouseClick(header(), Qt::LeftButton);
    m_clock->pass(60ms);
    QVERIFY(runningAnimation());
    QCOMPARE(runningAnimation()->currentTime(), 60);
    QTest::mouseClick(header(), Qt::LeftButton);
    QVERIFY(runningAnimation());
    QCOMPARE(runningAnimation()->currentTime(), 60);
    m_clock->pass(240ms);
    QVERIFY(strip()->isVisible());
    QCOMPARE(m_bar->width(), 20);
}

void TestSideBar::clickOnTheHeaderWhileOpeningCloses()
{
    QTest::mouseClick(strip(), Qt::LeftButton);
    const QPropertyAnimation* opening = runningAnimation();
    m_clock->pass(60ms);
    QCOMPARE(opening->currentTime(), 60);
    // The bar counts as open from the click on.
    QTest::mouseClick(header(), Qt::LeftButton);
    QCOMPARE(opening->state(), QAbstractAnimation::Stopped);
    QVERIFY(runningAnimation());
    QCOMPARE(runningAnimation()->endValue().toInt(), 20);
    m_clock->pass(300ms);
    QVERIFY(strip()->isVisible());
    QVERIFY(!m_bar->content()->isVisible());
    QCOMPARE(m_bar->width(), 20);
    // It can be opened again.
    open();
}

void TestSideBar::clickOnTheStripWhileOpenOrClosingDoesNothing()
{
    open();
    m_bar->onHideBtnClicked();
    QVERIFY(!runningAnimation());
    // The bar counts as open until the closing has ended.
    m_bar->onShowBtnClicked();
    const QPropertyAnimation* closing = runningAnimation();
    m_bar->onHideBtnClicked();
    QCOMPARE(runningAnimation(), closing);
    m_clock->pass(300ms);
    QVERIFY(strip()->isVisible());
    m_bar->onHideBtnClicked();
    QVERIFY(runningAnimation());
    QVERIFY(runningAnimation() != closing);
}

void TestSideBar::clickOnTheHeaderWhileShutDoesNothing()
{
    m_bar->onShowBtnClicked();
    QVERIFY(!runningAnimation());
    QVERIFY(strip()->isVisible());
}

void TestSideBar::wideContentDoesNotHoldUpTheSlide()
{
    auto* wide = new QWidget;
    wide->setFixedSize(60, 60);
    auto* layout = new QVBoxLayout(m_bar->content());
    layout->setContentsMargins(10, 10, 10, 10);
    layout->addWidget(wide);
    m_bar->onHideBtnClicked();
    m_clock->pass(150ms);
    QCOMPARE(m_bar->width(), 50);
    m_clock->pass(150ms);
    QCOMPARE(m_bar->width(), 80);
    m_bar->onShowBtnClicked();
    m_clock->pass(150ms);
    QCOMPARE(m_bar->width(), 50);
    m_clock->pass(150ms);
    QCOMPARE(m_bar->width(), 20);
}

void TestSideBar::openBarTakesANewWidthAtOnce()
{
    open();
    m_bar->setOpenWidth(120);
    QTRY_COMPARE(m_bar->width(), 120);
}

SCN_TEST(TestSideBar, QApplication)
#include "test_sidebar.moc"
