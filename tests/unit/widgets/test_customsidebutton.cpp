#include "support/testprogram.h"
#include "widgets/customsidebutton.h"
#include "widgets/rotatedlabel.h"

#include <QBoxLayout>
#include <QSignalSpy>
#include <QTest>

class TestCustomSideButton : public QObject
{
    Q_OBJECT

private slots:
    void isAFlatColumnAtFirst();
    void orientationTurnsTheLayout_data();
    void orientationTurnsTheLayout();
    void rebuildingLeavesNoItemBehind();
    void textGoesToTheLabel();
    void verticalTurnsTheLabel();
    void pixmapIsScaledInItsAspectRatio_data();
    void pixmapIsScaledInItsAspectRatio();
    void emptyPixmapEmptiesTheLabel();
    void clickOnTheLabelsClicksTheButton();
};

namespace {

QBoxLayout* layoutOf(const CustomSideButton& button)
{
    return qobject_cast<QBoxLayout*>(button.layout());
}

RotatedLabel* textOf(const CustomSideButton& button)
{
    return button.findChild<RotatedLabel*>();
}

QLabel* iconOf(const CustomSideButton& button)
{
    for (QLabel* label : button.findChildren<QLabel*>()) {
        if (label != textOf(button)) {
            return label;
        }
    }
    return nullptr;
}

} // namespace

void TestCustomSideButton::isAFlatColumnAtFirst()
{
    const CustomSideButton button;
    QVERIFY(button.isFlat());
    QVERIFY(!button.isCheckable());
    QCOMPARE(layoutOf(button)->direction(), QBoxLayout::TopToBottom);
    QCOMPARE(layoutOf(button)->contentsMargins(), QMargins());
    QCOMPARE(layoutOf(button)->spacing(), 0);
    for (const QLabel* label : {iconOf(button), static_cast<QLabel*>(textOf(button))}) {
        QCOMPARE(label->sizePolicy(), QSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum));
        QCOMPARE(label->minimumSize(), QSize(0, 0));
        QCOMPARE(label->alignment(), Qt::Alignment(Qt::AlignCenter));
    }
    QVERIFY(iconOf(button)->hasScaledContents());
    QCOMPARE(textOf(button)->styleSheet(), QStringLiteral("font-size:12px;"));
}

void TestCustomSideButton::orientationTurnsTheLayout_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("direction");
    QTest::addColumn<int>("expanding");
    QTest::newRow("column") << 0 << int(QBoxLayout::TopToBottom) << int(Qt::Vertical);
    QTest::newRow("row") << 1 << int(QBoxLayout::LeftToRight) << int(Qt::Horizontal);
}

void TestCustomSideButton::orientationTurnsTheLayout()
{
    QFETCH(int, orientation);
    QFETCH(int, direction);
    QFETCH(int, expanding);
    CustomSideButton button;
    button.setOrientation(1 - orientation);
    button.setOrientation(orientation);
    QBoxLayout* layout = layoutOf(button);
    QCOMPARE(int(layout->direction()), direction);
    QCOMPARE(layout->count(), 3);
    QCOMPARE(layout->itemAt(0)->widget(), iconOf(button));
    QCOMPARE(layout->itemAt(1)->widget(), textOf(button));
    QVERIFY(layout->itemAt(2)->spacerItem());
    QCOMPARE(layout->itemAt(2)->sizeHint(), QSize(20, 20));
    QCOMPARE(int(layout->itemAt(2)->expandingDirections()), expanding);
    QCOMPARE(layout->stretch(0), 0);
    QCOMPARE(layout->stretch(1), 0);
}

void TestCustomSideButton::rebuildingLeavesNoItemBehind()
{
    CustomSideButton button;
    for (int i = 0; i < 5; ++i) {
        button.setText(QString::number(i));
        button.setVertical(i % 2 == 0);
        button.setOrientation(i % 2);
        QCOMPARE(layoutOf(button)->count(), 3);
    }
}

void TestCustomSideButton::textGoesToTheLabel()
{
    CustomSideButton button;
    button.setText(QStringLiteral("小工具"));
    QCOMPARE(textOf(button)->text(), QStringLiteral("小工具"));
    QVERIFY(button.QPushButton::text().isEmpty());
}

void TestCustomSideButton::verticalTurnsTheLabel()
{
    CustomSideButton button;
    QVERIFY(!textOf(button)->isVertical());
    button.setVertical(true);
    QVERIFY(textOf(button)->isVertical());
    button.setVertical(false);
    QVERIFY(!textOf(button)->isVertical());
}

void TestCustomSideButton::pixmapIsScaledInItsAspectRatio_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("scaled");
    QTest::newRow("square") << QSize(32, 32) << QSize(15, 15);
    QTest::newRow("wide") << QSize(60, 20) << QSize(15, 5);
    QTest::newRow("high") << QSize(10, 30) << QSize(5, 15);
    QTest::newRow("small") << QSize(5, 5) << QSize(15, 15);
}

void TestCustomSideButton::pixmapIsScaledInItsAspectRatio()
{
    QFETCH(QSize, size);
    QFETCH(QSize, scaled);
    CustomSideButton button;
    QPixmap pixmap(size);
    pixmap.fill(Qt::red);
    button.setPixmap(pixmap);
    QCOMPARE(iconOf(button)->pixmap(Qt::ReturnByValue).size(), scaled);
    QCOMPARE(iconOf(button)->minimumSize(), QSize(15, 15));
    QCOMPARE(iconOf(button)->maximumSize(), QSize(15, 15));
}

void TestCustomSideButton::emptyPixmapEmptiesTheLabel()
{
    CustomSideButton button;
    button.setPixmap(QPixmap());
    QVERIFY(iconOf(button)->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(iconOf(button)->minimumSize(), QSize(0, 0));
}

void TestCustomSideButton::clickOnTheLabelsClicksTheButton()
{
    CustomSideButton button;
    button.setText(QStringLiteral("title"));
    button.resize(20, 200);
    button.show();
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    QSignalSpy clicked(&button, &QPushButton::clicked);
    QTest::mouseClick(button.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      textOf(button)->geometry().center());
    QCOMPARE(clicked.count(), 1);
}

SCN_TEST(TestCustomSideButton, QApplication)
#include "test_customsidebutton.moc"
