#include "support/testprogram.h"
#include "widgets/hovercombobox.h"

#include <QAbstractItemView>
#include <QCursor>
#include <QTest>

namespace {

/// Counts requests for the popup.
class CountingBox : public HoverComboBox
{
public:
    void showPopup() override
    {
        ++shown;
        HoverComboBox::showPopup();
    }

    int shown = 0;
};

void send(QWidget& widget, QEvent::Type type)
{
    QEvent event(type);
    QCoreApplication::sendEvent(&widget, &event);
}

} // namespace

class TestHoverComboBox : public QObject
{
    Q_OBJECT

private slots:
    void tracksTheMouse();
    void enteringOpensThePopupOnce();
    void leavingClosesThePopup();
    void leavingWithThePointerStillInsideKeepsThePopup();
    void popupClosedByAChoiceOpensAgainAtTheNextEntry();
};

void TestHoverComboBox::tracksTheMouse()
{
    const HoverComboBox box;
    QVERIFY(box.hasMouseTracking());
}

void TestHoverComboBox::enteringOpensThePopupOnce()
{
    CountingBox box;
    box.addItem(QStringLiteral("a"));
    box.show();
    send(box, QEvent::Enter);
    QVERIFY(box.view()->isVisible());
    send(box, QEvent::Enter);
    QCOMPARE(box.shown, 1);
}

void TestHoverComboBox::leavingClosesThePopup()
{
    CountingBox box;
    box.addItem(QStringLiteral("a"));
    box.show();
    send(box, QEvent::Enter);
    QCursor::setPos(box.mapToGlobal(QPoint(-20, -20)));
    send(box, QEvent::Leave);
    QTRY_VERIFY(!box.view()->isVisible());
    send(box, QEvent::Enter);
    QCOMPARE(box.shown, 2);
}

void TestHoverComboBox::leavingWithThePointerStillInsideKeepsThePopup()
{
    CountingBox box;
    box.addItem(QStringLiteral("a"));
    box.show();
    send(box, QEvent::Enter);
    QCursor::setPos(box.mapToGlobal(box.rect().center()));
    send(box, QEvent::Leave);
    QVERIFY(box.view()->isVisible());
    send(box, QEvent::Enter);
    QCOMPARE(box.shown, 1);
}

void TestHoverComboBox::popupClosedByAChoiceOpensAgainAtTheNextEntry()
{
    CountingBox box;
    box.addItems({QStringLiteral("a"), QStringLiteral("b")});
    box.show();
    send(box, QEvent::Enter);
    QTest::keyClick(box.view(), Qt::Key_Down);
    QTest::keyClick(box.view(), Qt::Key_Return);
    QTRY_VERIFY(!box.view()->isVisible());
    QCOMPARE(box.currentIndex(), 1);
    send(box, QEvent::Enter);
    QCOMPARE(box.shown, 2);
}

SCN_TEST(TestHoverComboBox, QApplication)
#include "test_hovercombobox.moc"
