#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "widgets/customitemdelegate.h"

#include <QListView>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

class TestCustomComboBox : public QObject
{
    Q_OBJECT

private slots:
    void startsWithASpacedUniformListAndItsOwnDelegate();
    void popupIsCreatedByItsFirstUse_data();
    void popupIsCreatedByItsFirstUse();
    void lettersSelectInABoxThatWasNeverOpened();
    void popupTakesTheFontAndStyleOfTheBox();
    void isAsLargeAsAPlainBox_data();
    void isAsLargeAsAPlainBox();
    void functionItemsGoBehindTheLastRow();
    void presentSpacingEmitsNothing();
    void newSpacingReachesDelegateAndRows();
    void popupFollowsTheWidthOfTheBox();
    void popupOfLongTextsIsAsWideAsTheBox();
    void currentRowOfThePopupFollowsTheBox();
    void delegateFillsOnlySelectedRowsWithTheHighlight();
    void delegateDrawsTheIconBeforeTheText();
    void delegateTakesTheColourOfTheState_data();
    void delegateTakesTheColourOfTheState();
};

namespace {

QListView* listOf(const CustomComboBox& box)
{
    return qobject_cast<QListView*>(box.view());
}

CustomItemDelegate* delegateOf(const CustomComboBox& box)
{
    return qobject_cast<CustomItemDelegate*>(box.view()->itemDelegate());
}

QStyleOptionViewItem rowOption(const QWidget& owner, QStyle::State state)
{
    QStyleOptionViewItem option;
    option.initFrom(&owner);
    option.state = state;
    option.rect = QRect(0, 0, 120, 20);
    option.decorationSize = QSize(16, 16);
    option.palette.setColor(QPalette::Highlight, Qt::blue);
    option.palette.setColor(QPalette::Active, QPalette::Text, Qt::red);
    option.palette.setColor(QPalette::Active, QPalette::HighlightedText, Qt::green);
    option.palette.setColor(QPalette::Disabled, QPalette::Text, Qt::magenta);
    return option;
}

QImage paintRow(const CustomComboBox& box, QStyle::State state)
{
    QImage image(120, 20, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    delegateOf(box)->paint(&painter, rowOption(box, state), box.model()->index(0, 0));
    return image;
}

int countPixels(const QImage& image, const QColor& colour, const QRect& part)
{
    int count = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            count += image.pixelColor(x, y) == colour ? 1 : 0;
        }
    }
    return count;
}

} // namespace

void TestCustomComboBox::startsWithASpacedUniformListAndItsOwnDelegate()
{
    const CustomComboBox box;
    QCOMPARE(box.itemSpacing(), 4);
    QVERIFY(listOf(box));
    QCOMPARE(listOf(box)->spacing(), 4);
    QVERIFY(listOf(box)->uniformItemSizes());
    QVERIFY(delegateOf(box));
    QCOMPARE(delegateOf(box)->spacing(), 4);
    QCOMPARE(delegateOf(box)->parent(), &box);
}

void TestCustomComboBox::popupIsCreatedByItsFirstUse_data()
{
    QTest::addColumn<bool>("byMouse");
    QTest::newRow("mouse") << true;
    QTest::newRow("key") << false;
}

void TestCustomComboBox::popupIsCreatedByItsFirstUse()
{
    QFETCH(bool, byMouse);
    CustomComboBox box;
    box.addFunctionItems({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    box.setItemSpacing(15);
    box.setCurrentIndex(1);
    box.resize(120, 24);
    box.show();
    QVERIFY(QTest::qWaitForWindowActive(&box));
    box.setStyleSheet(QStringLiteral("font-size: 15px;"));
    box.resize(130, 24);
    box.setCurrentIndex(2);
    QVERIFY(box.findChildren<QWidget*>().isEmpty());

    if (byMouse) {
        QTest::mouseClick(&box, Qt::LeftButton);
    } else {
        QTest::keyClick(&box, Qt::Key_F4);
    }
    QCOMPARE(box.findChildren<QListView*>().count(), 1);
    QTRY_VERIFY(listOf(box)->isVisible());
    QCOMPARE(delegateOf(box)->spacing(), 15);
    QCOMPARE(box.view()->width(), 130);
    QCOMPARE(box.view()->currentIndex().row(), 2);
    QTest::keyClick(box.view(), Qt::Key_Up);
    QTest::keyClick(box.view(), Qt::Key_Return);
    QCOMPARE(box.currentIndex(), 1);
}

void TestCustomComboBox::lettersSelectInABoxThatWasNeverOpened()
{
    CustomComboBox box;
    box.addFunctionItems({QStringLiteral("SCAL"), QStringLiteral("PCT"), QStringLiteral("DBM")});
    box.show();
    QVERIFY(QTest::qWaitForWindowActive(&box));
    QTest::keyClick(&box, Qt::Key_D);
    QCOMPARE(box.currentText(), QStringLiteral("DBM"));
    QVERIFY(delegateOf(box));
}

void TestCustomComboBox::popupTakesTheFontAndStyleOfTheBox()
{
    CustomComboBox box;
    box.addItem(QStringLiteral("a"));
    box.show();
    QFont font = box.font();
    font.setPixelSize(31);
    box.setFont(font);
    QCOMPARE(box.view()->font().pixelSize(), 31);
    font.setPixelSize(17);
    box.setFont(font);
    QCOMPARE(box.view()->font().pixelSize(), 17);
}

void TestCustomComboBox::isAsLargeAsAPlainBox_data()
{
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<QString>("styleSheet");
    const QStringList texts{QStringLiteral("直流电压"), QStringLiteral("the longest of all"),
                            QStringLiteral("K")};
    for (const char* sheet : {"", "font-size: 31px;", "height: 40px; border: 3px solid red;"}) {
        QTest::addRow("texts \"%s\"", sheet) << texts << QString::fromLatin1(sheet);
        QTest::addRow("empty \"%s\"", sheet) << QStringList() << QString::fromLatin1(sheet);
    }
}

void TestCustomComboBox::isAsLargeAsAPlainBox()
{
    QFETCH(QStringList, items);
    QFETCH(QString, styleSheet);
    CustomComboBox box;
    QComboBox plain;
    const auto checkSame = [&] {
        QCOMPARE(box.sizeHint(), plain.sizeHint());
        QCOMPARE(box.minimumSizeHint(), plain.minimumSizeHint());
    };
    checkSame();
    for (QComboBox* each : {static_cast<QComboBox*>(&box), &plain}) {
        each->addItems(items);
        each->setStyleSheet(styleSheet);
    }
    checkSame();
    for (QComboBox* each : {static_cast<QComboBox*>(&box), &plain}) {
        each->show();
        each->addItem(QStringLiteral("added once it was measured, and longer than the rest"));
    }
    checkSame();
    box.view();
    checkSame();
}

void TestCustomComboBox::functionItemsGoBehindTheLastRow()
{
    CustomComboBox box;
    box.addItem(QStringLiteral("无"));
    box.addFunctionItems({QStringLiteral("直流电压"), QStringLiteral("频率")});
    box.addFunctionItems({QStringLiteral("周期")});
    QCOMPARE(box.count(), 4);
    QCOMPARE(box.itemText(0), QStringLiteral("无"));
    QCOMPARE(box.itemText(1), QStringLiteral("直流电压"));
    QCOMPARE(box.itemText(2), QStringLiteral("频率"));
    QCOMPARE(box.itemText(3), QStringLiteral("周期"));
}

void TestCustomComboBox::presentSpacingEmitsNothing()
{
    CustomComboBox box;
    QSignalSpy changed(&box, &CustomComboBox::itemSpacingChanged);
    box.setItemSpacing(4);
    QCOMPARE(changed.count(), 0);
    box.setItemSpacing(15);
    box.setItemSpacing(15);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toInt(), 15);
}

void TestCustomComboBox::newSpacingReachesDelegateAndRows()
{
    CustomComboBox box;
    box.addFunctionItems({QStringLiteral("1 V"), QStringLiteral("10 V")});
    box.show();
    box.showPopup();
    const QModelIndex first = box.model()->index(0, 0);
    const QModelIndex second = box.model()->index(1, 0);
    const int oldHeight = box.view()->visualRect(first).height();
    const int oldPitch = box.view()->visualRect(second).top() - box.view()->visualRect(first).top();

    box.setItemSpacing(15);

    QCOMPARE(box.itemSpacing(), 15);
    QCOMPARE(delegateOf(box)->spacing(), 15);
    QTRY_COMPARE(box.view()->visualRect(first).height(), oldHeight + 11);
    QCOMPARE(box.view()->visualRect(second).top() - box.view()->visualRect(first).top(),
             oldPitch + 11);
}

void TestCustomComboBox::popupFollowsTheWidthOfTheBox()
{
    CustomComboBox box;
    box.resize(160, 24);
    box.show();
    QCOMPARE(box.view()->minimumWidth(), 160);
    QCOMPARE(box.view()->maximumWidth(), 160);
    for (const int width : {90, 240, 110}) {
        box.resize(width, 24);
        QTRY_COMPARE(box.view()->minimumWidth(), width);
        QCOMPARE(box.view()->maximumWidth(), width);
    }
    // Also where something else has set the width while the box was hidden.
    box.hide();
    box.view()->setFixedWidth(7);
    box.show();
    QCOMPARE(box.view()->minimumWidth(), 110);
    QCOMPARE(box.view()->maximumWidth(), 110);
}

void TestCustomComboBox::popupOfLongTextsIsAsWideAsTheBox()
{
    CustomComboBox box;
    box.addFunctionItems(
        {QStringLiteral("温度四线制 RTD, a text much longer than the box is wide")});
    box.resize(100, 24);
    box.show();
    box.showPopup();
    QTRY_VERIFY(box.view()->isVisible());
    QCOMPARE(box.view()->width(), 100);
    const auto* popup = qobject_cast<QFrame*>(box.view()->window());
    QVERIFY(popup);
    QCOMPARE(popup->contentsRect().width(), 100);
}

void TestCustomComboBox::currentRowOfThePopupFollowsTheBox()
{
    CustomComboBox box;
    box.addFunctionItems({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    box.show();
    box.showPopup();
    box.setCurrentIndex(2);
    QCOMPARE(box.view()->currentIndex().row(), 2);
    box.setCurrentIndex(-1);
    QVERIFY(!box.view()->currentIndex().isValid());
}

void TestCustomComboBox::delegateFillsOnlySelectedRowsWithTheHighlight()
{
    CustomComboBox box;
    box.addItem(QString());
    const QRect whole(0, 0, 120, 20);
    const QImage selected =
        paintRow(box, QStyle::State_Enabled | QStyle::State_Active | QStyle::State_Selected);
    QCOMPARE(countPixels(selected, Qt::blue, whole), 120 * 20);
    const QImage plain = paintRow(box, QStyle::State_Enabled | QStyle::State_Active);
    QCOMPARE(countPixels(plain, Qt::white, whole), 120 * 20);
}

void TestCustomComboBox::delegateDrawsTheIconBeforeTheText()
{
    CustomComboBox box;
    QPixmap cyan(16, 16);
    cyan.fill(Qt::cyan);
    box.addItem(QIcon(cyan), QStringLiteral("MMMM"));
    const QImage row = paintRow(box, QStyle::State_Enabled | QStyle::State_Active);
    QCOMPARE(countPixels(row, Qt::cyan, QRect(0, 0, 24, 20)), 16 * 16);
    QCOMPARE(countPixels(row, Qt::cyan, QRect(24, 0, 96, 20)), 0);
    QCOMPARE(countPixels(row, Qt::red, QRect(0, 0, 20, 20)), 0);
    QVERIFY(countPixels(row, Qt::red, QRect(20, 0, 100, 20)) > 10);
}

void TestCustomComboBox::delegateTakesTheColourOfTheState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QColor>("colour");
    const int active = QStyle::State_Enabled | QStyle::State_Active;
    QTest::newRow("plain") << active << QColor(Qt::red);
    QTest::newRow("selected") << (active | QStyle::State_Selected) << QColor(Qt::green);
    QTest::newRow("disabled") << int(QStyle::State_None) << QColor(Qt::magenta);
}

void TestCustomComboBox::delegateTakesTheColourOfTheState()
{
    QFETCH(int, state);
    QFETCH(QColor, colour);
    CustomComboBox box;
    box.addItem(QStringLiteral("MMMM"));
    const QRect whole(0, 0, 120, 20);
    const QImage row = paintRow(box, QStyle::State(state));
    for (const QColor& other : {QColor(Qt::red), QColor(Qt::green), QColor(Qt::magenta)}) {
        const int count = countPixels(row, other, whole);
        QVERIFY2(other == colour ? count > 10 : count == 0, qPrintable(other.name()));
    }
}

SCN_TEST(TestCustomComboBox, QApplication)
#include "test_customcombobox.moc"
