#include "app/mainwidget.h"
#include "overlay/loadingview.h"
#include "state/globals.h"
#include "support/eventcounter.h"
#include "support/hand.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/timecolumn.h"
#include "widgets/timepicker.h"
#include "windowbench.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDateTimeEdit>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QTabWidget>
#include <QTextEdit>
#include <QToolButton>
#include <QtTest>

#include <initializer_list>

using namespace scn;

namespace {

/// The window with twenty channels, on a screen, ready for input.
struct Desk : WindowBench
{
    Desk()
    {
        instrument().putModule(1, QStringLiteral("SCN4000A"));
        open();
        window().resize(1500, 500);
        window().show();
        QVERIFY(QTest::qWaitForWindowActive(&window()));
        startupView()->stopLoading();
        window().setFocus(Qt::OtherFocusReason);
        hand::movePointer(&window(), QPoint(5, window().height() - 5));
    }

    QTabWidget* settings() const
    {
        return window().findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    }
    QScrollArea* page(int index) const
    {
        settings()->setCurrentIndex(index);
        return qobject_cast<QScrollArea*>(settings()->widget(index));
    }
    QStringList takeLines() { return instrument().takeLines(); }
};

/// Clicks the check mark of an item of the table.
void clickMark(QTreeWidget* tree, const QTreeWidgetItem* item)
{
    QStyleOptionViewItem option;
    option.initFrom(tree);
    option.rect =
        tree->visualRect(tree->indexAt(tree->visualItemRect(item).center()).siblingAtColumn(0));
    option.features = QStyleOptionViewItem::HasCheckIndicator;
    option.viewItemPosition = QStyleOptionViewItem::Beginning;
    const QRect mark =
        tree->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, tree);
    hand::click(tree->viewport(), mark.center());
}

} // namespace

/// The table and the forms under real mouse, wheel and keys.
class TestWindowHand : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void clickOnAMarkTicks();
    void keyOfAChannelIsTheTextOfItsButton();
    void refusedTickGoesBack_data();
    void refusedTickGoesBack();
    void refusedTickSpoilsNoLaterOne();
    void overlayIsSeenBeforeTheExchange();
    void pastedNumberIsOneCommand_data();
    void pastedNumberIsOneCommand();
    void unitOfAnUntickedChannelStaysOutOfTheScanList();
    void wheelOverTheTableScrolls_data();
    void wheelOverTheTableScrolls();
    void wheelTurnsABoxThatHasTheFocus();
    void pointerOverTheTableTakesNoFocus();
    void clickAndKeyGiveABoxTheFocus();

    void wheelOverAFormScrolls_data();
    void wheelOverAFormScrolls();
    void typedCountIsSentOnce();
    void arrowOfTheIntervalIsOneStep();
    void tabLeavesTheComment();
    void focusShowsInTheTable_data();
    void focusShowsInTheTable();
};

void TestWindowHand::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
    }
}

void TestWindowHand::clickOnAMarkTicks()
{
    Desk desk;
    clickMark(desk.tree(), desk.item(103));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@103)", "SYST:ERR?"}));
    // The module's own mark: all of its channels in one command.
    clickMark(desk.tree(), desk.module(1));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@101:120)", "SYST:ERR?"}));
    QCOMPARE(desk.tickedChannels().size(), 20);
    clickMark(desk.tree(), desk.module(1));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@)", "SYST:ERR?"}));
    QCOMPARE(desk.tickedChannels(), QList<int>());
}

void TestWindowHand::keyOfAChannelIsTheTextOfItsButton()
{
    Desk desk;
    desk.cell<QPushButton>(103, NumberColumn)->setText(QStringLiteral("117"));
    clickMark(desk.tree(), desk.item(103));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@117)", "SYST:ERR?"}));
    QCOMPARE(g_scanChannels.keys(), QList<int>{117});
}

void TestWindowHand::refusedTickGoesBack_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("settings conflict") << "-221,\"Settings conflict\"" << true;
    QTest::newRow("other negative number") << "-1,\"?\"" << true;
    QTest::newRow("no error") << "+0,\"No error\"" << false;
    QTest::newRow("error of the device") << "532,\"Cannot achieve requested resolution\"" << false;
    QTest::newRow("no reply") << QString() << false;
    QTest::newRow("no number") << "-,\"?\"" << false;
}

void TestWindowHand::refusedTickGoesBack()
{
    QFETCH(QString, reply);
    QFETCH(bool, isRefused);
    Desk desk;
    clickMark(desk.tree(), desk.item(102));
    clickMark(desk.tree(), desk.item(104));
    desk.takeLines();
    const auto answerNext = [&desk, &reply] {
        desk.instrument().setNextReply(QStringLiteral("SYST:ERR?"), reply);
    };
    const QList<int> before{102, 104};
    const auto isBack = [&desk, &before] {
        return desk.tickedChannels() == before && g_scanChannels.keys() == before &&
               desk.module(1)->checkState(ScanColumn) == Qt::PartiallyChecked;
    };
    // One tick more, one less, and all of them. Only the list and its query are sent.
    answerNext();
    clickMark(desk.tree(), desk.item(103));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@102:104)", "SYST:ERR?"}));
    QCOMPARE(isBack(), isRefused);
    if (!isRefused) {
        return;
    }
    answerNext();
    clickMark(desk.tree(), desk.item(102));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@104)", "SYST:ERR?"}));
    QVERIFY(isBack());
    answerNext();
    clickMark(desk.tree(), desk.module(1));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@101:120)", "SYST:ERR?"}));
    QVERIFY(isBack());
}

void TestWindowHand::refusedTickSpoilsNoLaterOne()
{
    Desk desk;
    desk.instrument().setNextReply(QStringLiteral("SYST:ERR?"),
                                   QStringLiteral("-221,\"Settings conflict\""));
    clickMark(desk.tree(), desk.item(103));
    QCOMPARE(desk.tickedChannels(), QList<int>());
    QCOMPARE(desk.module(1)->checkState(ScanColumn), Qt::Unchecked);
    desk.takeLines();
    clickMark(desk.tree(), desk.item(101));
    QCOMPARE(desk.takeLines(), texts({"ROUT:SCAN (@101)", "SYST:ERR?"}));
    QCOMPARE(desk.tickedChannels(), QList<int>{101});
}

void TestWindowHand::overlayIsSeenBeforeTheExchange()
{
    Desk desk;
    EventCounter paints(desk.startupView()->viewport(), QEvent::Paint);
    int painted = 0;
    desk.instrument().whenAsked(QStringLiteral("ROUT:SCAN (@103)"),
                                [&painted, &paints] { painted = paints.count(); });
    clickMark(desk.tree(), desk.item(103));
    QVERIFY(painted > 0);
    QVERIFY(!desk.startupView()->isVisible());
}

void TestWindowHand::pastedNumberIsOneCommand_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("pasted");
    QTest::addColumn<QString>("command");
    QTest::newRow("line end") << int(GainColumn) << "2.5\n"
                              << "CALC:SCAL:GAIN 2.5,(@103)";
    QTest::newRow("blanks") << int(OffsetColumn) << "  -3e2 \t"
                            << "CALC:SCAL:OFFS -3e2,(@103)";
    QTest::newRow("two lines") << int(GainColumn) << "2.5\n3" << QString();
    QTest::newRow("two words") << int(OffsetColumn) << "1 000" << QString();
    QTest::newRow("blanks alone") << int(GainColumn) << "  " << QString();
}

void TestWindowHand::pastedNumberIsOneCommand()
{
    QFETCH(int, column);
    QFETCH(QString, pasted);
    QFETCH(QString, command);
    Desk desk;
    QGuiApplication::clipboard()->setText(pasted);
    hand::click(desk.edit(103, ChannelColumn(column)));
    hand::press(Qt::Key_A, Qt::ControlModifier);
    hand::press(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(desk.takeLines(), QStringList());
    hand::press(Qt::Key_Return);
    if (command.isEmpty()) {
        QCOMPARE(desk.takeLines(), QStringList());
        QCOMPARE(desk.message().isEmpty(), pasted.trimmed().isEmpty());
    } else {
        QCOMPARE(desk.takeLines(),
                 texts({qPrintable(command), "SYST:ERR?"}) + voltageReadBack(103));
        QCOMPARE(desk.message(), QString());
    }
}

void TestWindowHand::unitOfAnUntickedChannelStaysOutOfTheScanList()
{
    Desk desk;
    for (const char* function : {"FUNC? (@105)", "FUNC? (@115)"}) {
        desk.instrument().setReply(QString::fromLatin1(function), QStringLiteral("\"FRES\""));
    }
    desk.readBack(105);
    clickMark(desk.tree(), desk.item(101));
    desk.takeLines();
    for (const int channel : {102, 105}) {
        desk.box(channel, UnitColumn)->setFocus(Qt::TabFocusReason);
        hand::press(Qt::Key_Down);
        const QStringList sent = desk.takeLines().filter(QStringLiteral("CALC:SCAL:UNIT \""));
        QVERIFY(!sent.isEmpty() && sent.constLast().endsWith(QStringLiteral("(@%1)").arg(channel)));
    }
    QCOMPARE(g_scanChannels.keys(), QList<int>{101});
}

void TestWindowHand::wheelOverTheTableScrolls_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("function") << int(FunctionColumn);
    QTest::newRow("range") << int(RangeColumn);
    QTest::newRow("scale function") << int(ScaleFunctionColumn);
    QTest::newRow("unit") << int(UnitColumn);
}

void TestWindowHand::wheelOverTheTableScrolls()
{
    QFETCH(int, column);
    Desk desk;
    const CustomComboBox* const box = desk.box(103, ChannelColumn(column));
    const int scrolled = desk.tree()->verticalScrollBar()->value();
    QVERIFY(desk.tree()->verticalScrollBar()->maximum() > 0);
    hand::turnWheel(box, -1);
    QVERIFY(desk.tree()->verticalScrollBar()->value() > scrolled);
    QVERIFY(!box->hasFocus());
    QCOMPARE(box->currentIndex(), 0);
    QCOMPARE(desk.takeLines(), QStringList());
}

void TestWindowHand::wheelTurnsABoxThatHasTheFocus()
{
    Desk desk;
    CustomComboBox* const box = desk.box(103, RangeColumn);
    box->setFocus(Qt::TabFocusReason);
    hand::turnWheel(box, -1);
    QCOMPARE(desk.takeLines().filter(QStringLiteral(":RANG ")),
             QStringList{QStringLiteral("VOLT:DC:RANG 0.1,(@103)")});
}

void TestWindowHand::pointerOverTheTableTakesNoFocus()
{
    Desk desk;
    const QWidget* const before = QApplication::focusWidget();
    QVERIFY(before);
    const QWidget* const viewport = desk.tree()->viewport();
    const int y = desk.tree()->visualItemRect(desk.item(103)).center().y();
    // Over the controls, and over the strips between them.
    for (int x = 2; x < viewport->width(); x += 3) {
        hand::movePointer(viewport, QPoint(x, y));
        QCOMPARE(QApplication::focusWidget(), before);
    }
    const QRect row = desk.tree()->visualItemRect(desk.item(104));
    const QPoint middle = desk.box(104, FunctionColumn)->geometry().center();
    for (int strip = row.top(); strip <= row.bottom(); ++strip) {
        hand::movePointer(viewport, QPoint(middle.x(), strip));
        QCOMPARE(QApplication::focusWidget(), before);
    }
}

void TestWindowHand::clickAndKeyGiveABoxTheFocus()
{
    Desk desk;
    const CustomComboBox* const box = desk.box(103, FunctionColumn);
    hand::click(box);
    hand::press(Qt::Key_Escape);
    QTRY_VERIFY(!QApplication::activePopupWidget());
    QVERIFY(box->hasFocus());
    hand::press(Qt::Key_Tab);
    QVERIFY(!box->hasFocus());
    hand::press(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(box->hasFocus());
    QCOMPARE(desk.takeLines(), QStringList());
}

void TestWindowHand::wheelOverAFormScrolls_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QByteArray>("kind");
    QTest::newRow("slot box") << 0 << QByteArray("QComboBox");
    QTest::newRow("alarm box") << 1 << QByteArray("QComboBox");
    QTest::newRow("count") << 1 << QByteArray("QSpinBox");
    QTest::newRow("time") << 1 << QByteArray("QDateTimeEdit");
}

void TestWindowHand::wheelOverAFormScrolls()
{
    QFETCH(int, page);
    QFETCH(QByteArray, kind);
    Desk desk;
    QScrollArea* const area = desk.page(page);
    // Small enough that the page scrolls.
    desk.window().resize(1500, 300);
    QTRY_VERIFY(area->verticalScrollBar()->maximum() > 0);
    int seen = 0;
    for (QWidget* control : area->findChildren<QWidget*>()) {
        if (!control->inherits(kind.constData()) || !control->isVisible()) {
            continue;
        }
        ++seen;
        control->setEnabled(true);
        area->ensureWidgetVisible(control);
        area->verticalScrollBar()->setValue(
            qMin(area->verticalScrollBar()->value(), area->verticalScrollBar()->maximum() - 20));
        const int scrolled = area->verticalScrollBar()->value();
        QCoreApplication::processEvents();
        hand::turnWheel(control, -1);
        hand::turnWheel(control, -1);
        QVERIFY(!control->hasFocus());
        QVERIFY(area->verticalScrollBar()->value() > scrolled);
    }
    QVERIFY(seen > 0);
    QCOMPARE(desk.takeLines(), QStringList());
}

void TestWindowHand::typedCountIsSentOnce()
{
    Desk desk;
    QScrollArea* const area = desk.page(1);
    auto* const radio = desk.button(QStringLiteral("N次扫描后:"));
    area->ensureWidgetVisible(radio);
    hand::click(radio, QPoint(5, radio->height() / 2));
    QCOMPARE(desk.takeLines(), texts({"TRIG:COUN 1"}));
    auto* const count = radio->parentWidget()->findChild<QSpinBox*>();
    hand::click(count->findChild<QLineEdit*>());
    hand::press(Qt::Key_A, Qt::ControlModifier);
    hand::type(QStringLiteral("250"));
    QCOMPARE(desk.takeLines(), QStringList());
    hand::press(Qt::Key_Return);
    QCOMPARE(desk.takeLines(), texts({"TRIG:COUN 250", "SYST:ERR?"}));
    hand::press(Qt::Key_Up);
    QCOMPARE(desk.takeLines(), texts({"TRIG:COUN 251", "SYST:ERR?"}));
}

void TestWindowHand::arrowOfTheIntervalIsOneStep()
{
    Desk desk;
    QScrollArea* const area = desk.page(1);
    auto* const radio = desk.button(QStringLiteral("自定义:"));
    area->ensureWidgetVisible(radio, 0, 100);
    hand::click(radio, QPoint(5, radio->height() / 2));
    auto* const picker = radio->parentWidget()->findChild<TimePicker*>();
    const TimeColumn* const seconds = picker->findChildren<TimeColumn*>().at(3);
    hand::click(seconds->findChild<QLineEdit*>());
    desk.takeLines();
    for (const QToolButton* arrow : seconds->findChildren<QToolButton*>()) {
        QTRY_VERIFY(arrow->isVisible());
        hand::click(arrow);
        QCOMPARE(desk.takeLines(), arrow->arrowType() == Qt::UpArrow ? texts({"TRIG:TIM 11"})
                                                                     : texts({"TRIG:TIM 10"}));
    }
}

void TestWindowHand::tabLeavesTheComment()
{
    Desk desk;
    QScrollArea* const area = desk.page(1);
    auto* const comment = area->findChild<QTextEdit*>();
    area->ensureWidgetVisible(comment);
    hand::click(comment->viewport());
    QVERIFY(comment->hasFocus());
    hand::type(QStringLiteral("run 7"));
    hand::press(Qt::Key_Tab);
    QVERIFY(!comment->hasFocus());
    QCOMPARE(comment->toPlainText(), QStringLiteral("run 7"));
    hand::press(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(comment->hasFocus());
}

void TestWindowHand::focusShowsInTheTable_data()
{
    QTest::addColumn<int>("column");
    for (const int column : {NumberColumn, NameColumn, FunctionColumn, MoreColumn, ScaleColumn,
                             ScaleFunctionColumn, GainColumn, UnitColumn}) {
        QTest::addRow("column %d", column) << column;
    }
}

void TestWindowHand::focusShowsInTheTable()
{
    QFETCH(int, column);
    Desk desk;
    QWidget* const control = desk.tree()->itemWidget(desk.item(103), column);
    const QImage rest = control->grab().toImage();
    control->setFocus(Qt::TabFocusReason);
    QVERIFY(control->hasFocus());
    const QImage focused = control->grab().toImage();
    // The frame, not just the cursor or a row of dots.
    int changed = 0;
    for (int x = 0; x < rest.width(); ++x) {
        for (int y = 0; y < rest.height(); ++y) {
            changed += rest.pixel(x, y) != focused.pixel(x, y) ? 1 : 0;
        }
    }
    QVERIFY2(changed >= rest.width() + rest.height(), qPrintable(QString::number(changed)));
}

SCN_TEST(TestWindowHand, QApplication)
#include "test_windowhand.moc"
