#include "channels/commfunc.h"
#include "plot/customtitlebar.h"
#include "resources/resources.h"
#include "support/testprogram.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {
/// A parent that counts the double clicks that reach it.
class Parent : public QWidget
{
public:
    int doubleClicks = 0;

protected:
    void mouseDoubleClickEvent(QMouseEvent*) override { ++doubleClicks; }
};

struct Fixture
{
    explicit Fixture(const QString& iconPath = QString())
        : bar(iconPath, &parent)
    {
        parent.resize(400, 100);
        bar.resize(400, 40);
        parent.show();
    }

    QHBoxLayout* layout() const { return qobject_cast<QHBoxLayout*>(bar.layout()); }
    QLabel* title() const { return qobject_cast<QLabel*>(layout()->itemAt(0)->widget()); }
    QLabel* icon() const { return qobject_cast<QLabel*>(layout()->itemAt(1)->widget()); }
    QPushButton* button(int number) const
    {
        return qobject_cast<QPushButton*>(layout()->itemAt(3 + 2 * number)->widget());
    }

    Parent parent;
    CustomTitleBar bar;
};
} // namespace

class TestCustomTitleBar : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }

    void partsStandInOrder();
    void labelsAreSetUp();
    void iconIsScaledKeepingItsShape();
    void buttonsAreStyled();
    void buttonsReportTheirClicks();
    void titleIsShown();
    void tileShowsTheIconAlone();
    void leftDoubleClickMaximises();
    void otherDoubleClicksGoOn();
};

void TestCustomTitleBar::partsStandInOrder()
{
    const Fixture f;
    QCOMPARE(f.bar.minimumHeight(), 35);
    QHBoxLayout* layout = f.layout();
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(8, 2, 8, 0));
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->count(), 8);
    QVERIFY(f.title());
    QVERIFY(f.icon());
    const QSpacerItem* spacer = layout->itemAt(2)->spacerItem();
    QCOMPARE(spacer->sizeHint(), QSize(20, 20));
    QVERIFY(spacer->expandingDirections() & Qt::Horizontal);
    for (const int gap : {4, 6}) {
        QCOMPARE(layout->itemAt(gap)->spacerItem()->sizeHint().width(), 5);
    }
    for (int i = 0; i < 3; ++i) {
        QVERIFY(f.button(i));
    }
}

void TestCustomTitleBar::labelsAreSetUp()
{
    const Fixture f;
    QCOMPARE(f.title()->styleSheet(), QStringLiteral("color: white; font-size: 14px;"));
    QCOMPARE(f.title()->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(f.title()->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(f.title()->text(), QString());
    QVERIFY(!f.title()->isHidden());
    QCOMPARE(f.icon()->minimumSize(), QSize(60, 60));
    QCOMPARE(f.icon()->maximumSize(), QSize(60, 60));
    QCOMPARE(f.icon()->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(f.icon()->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(f.icon()->alignment(), Qt::AlignCenter);
    QVERIFY(f.icon()->isHidden());
}

void TestCustomTitleBar::iconIsScaledKeepingItsShape()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("icon.png"));
    QPixmap picture(200, 100);
    picture.fill(Qt::red);
    QVERIFY(picture.save(path));
    const Fixture f(path);
    QCOMPARE(f.icon()->pixmap(Qt::ReturnByValue).size(), QSize(50, 25));
}

void TestCustomTitleBar::buttonsAreStyled()
{
    const Fixture f;
    const QString icons[] = {QStringLiteral(":/dark/window_minimize.png"),
                             QStringLiteral(":/dark/window_undock.png"),
                             QStringLiteral(":/dark/window_close.png")};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(f.button(i)->styleSheet(), CommFunc().buttonStyle());
        const QImage icon = f.button(i)->icon().pixmap(16).toImage();
        QVERIFY(!icon.isNull());
        QCOMPARE(icon, QIcon(icons[i]).pixmap(16).toImage());
    }
}

void TestCustomTitleBar::buttonsReportTheirClicks()
{
    const Fixture f;
    QSignalSpy minimize(&f.bar, &CustomTitleBar::minimizeClicked);
    QSignalSpy maximize(&f.bar, &CustomTitleBar::maximizeClicked);
    QSignalSpy close(&f.bar, &CustomTitleBar::closeClicked);
    const auto counts = [&] { return QList<int>{minimize.size(), maximize.size(), close.size()}; };
    QTest::mouseClick(f.button(0), Qt::LeftButton);
    QCOMPARE(counts(), (QList<int>{1, 0, 0}));
    QTest::mouseClick(f.button(1), Qt::LeftButton);
    QCOMPARE(counts(), (QList<int>{1, 1, 0}));
    QTest::mouseClick(f.button(2), Qt::LeftButton);
    QCOMPARE(counts(), (QList<int>{1, 1, 1}));
}

void TestCustomTitleBar::titleIsShown()
{
    Fixture f;
    f.bar.setTitle(QStringLiteral("图形设置1"));
    QCOMPARE(f.title()->text(), QStringLiteral("图形设置1"));
}

void TestCustomTitleBar::tileShowsTheIconAlone()
{
    Fixture f;
    f.bar.setCollapsed(true);
    QVERIFY(f.icon()->isVisible());
    QVERIFY(!f.title()->isVisible());
    for (int i = 0; i < 3; ++i) {
        QVERIFY(!f.button(i)->isVisible());
    }
    f.bar.setCollapsed(false);
    QVERIFY(!f.icon()->isVisible());
    QVERIFY(f.title()->isVisible());
    for (int i = 0; i < 3; ++i) {
        QVERIFY(f.button(i)->isVisible());
    }
}

void TestCustomTitleBar::leftDoubleClickMaximises()
{
    Fixture f;
    QSignalSpy maximize(&f.bar, &CustomTitleBar::maximizeClicked);
    QTest::mouseDClick(&f.bar, Qt::LeftButton, Qt::NoModifier, QPoint(150, 5));
    QCOMPARE(maximize.size(), 1);
    // The title is part of the bar.
    QTest::mouseDClick(f.title(), Qt::LeftButton);
    QCOMPARE(maximize.size(), 2);
    QCOMPARE(f.parent.doubleClicks, 0);
}

void TestCustomTitleBar::otherDoubleClicksGoOn()
{
    Fixture f;
    QSignalSpy maximize(&f.bar, &CustomTitleBar::maximizeClicked);
    QTest::mouseDClick(&f.bar, Qt::RightButton, Qt::NoModifier, QPoint(150, 5));
    QMouseEvent outside(QEvent::MouseButtonDblClick, QPointF(150, 60), Qt::LeftButton,
                        Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&f.bar, &outside);
    QCOMPARE(maximize.size(), 0);
    QCOMPARE(f.parent.doubleClicks, 2);
}

SCN_TEST(TestCustomTitleBar, QApplication)
#include "test_customtitlebar.moc"
