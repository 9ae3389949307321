#include "support/testprogram.h"
#include "widgets/timecolumn.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

class TestTimeColumn : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startsAtItsSmallestValuePadded_data();
    void startsAtItsSmallestValuePadded();
    void widthFitsTheDigits_data();
    void widthFitsTheDigits();
    void styleIsFixed();
    void firstColumnShowsNoSeparator();
    void valueIsClampedAndReportedOnce_data();
    void valueIsClampedAndReportedOnce();
    void emptyRangeTakesItsMinimum();
    void setValuePutsTheCursorAtTheEnd();
    void rangeClampsTheValue();
    void arrowsStepAndStopAtTheLimits();
    void arrowsStandOnlyWhileTheDigitsHaveTheFocus();
    void keysInTheDigits_data();
    void keysInTheDigits();
    void upAndDownInTheDigitsStep();
    void upTakesTheTypedTextFirst();
    void ctrlAndDigitIsNotTyped();
    void bareModifierKeepsFocusAndSelection();
    void backspaceCountsOnlyWhenEditingFinishes();
    void finishedEditing_data();
    void finishedEditing();
    void numberTooLargeToConvertShowsTheValueAgain();
    void otherCharactersAreRemoved_data();
    void otherCharactersAreRemoved();
    void guardDoesNotOutliveAChangeThatChangesNothing();
    void keysOfTheColumnItself();
    void focusOfTheColumnGoesToTheDigits();
    void columnGoesWhileItIsEdited();

private:
    TimeColumn* make(int min, int max, int digits = 2);
    QToolButton* arrow(Qt::ArrowType type) const;

    std::unique_ptr<QWidget> m_window;
    QLineEdit* m_other = nullptr;
    TimeColumn* m_column = nullptr;
    QLineEdit* m_edit = nullptr;
};

void TestTimeColumn::init()
{
    m_window = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(m_window.get());
    m_other = new QLineEdit;
    layout->addWidget(m_other);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_other->setFocus();
}

void TestTimeColumn::cleanup()
{
    m_window.reset();
}

TimeColumn* TestTimeColumn::make(int min, int max, int digits)
{
    m_column = new TimeColumn(QStringLiteral("HH"), min, max, digits, QStringLiteral(":"), false);
    m_window->layout()->addWidget(m_column);
    m_column->show();
    m_edit = m_column->findChild<QLineEdit*>();
    return m_column;
}

QToolButton* TestTimeColumn::arrow(Qt::ArrowType type) const
{
    for (QToolButton* button : m_column->findChildren<QToolButton*>()) {
        if (button->arrowType() == type) {
            return button;
        }
    }
    return nullptr;
}

void TestTimeColumn::startsAtItsSmallestValuePadded_data()
{
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0 << 2 << "00";
    QTest::newRow("three digits") << 0 << 3 << "000";
    QTest::newRow("not zero") << 7 << 2 << "07";
}

void TestTimeColumn::startsAtItsSmallestValuePadded()
{
    QFETCH(int, min);
    QFETCH(int, digits);
    QFETCH(QString, text);
    make(min, 59, digits);
    QCOMPARE(m_column->value(), min);
    QCOMPARE(m_column->minimum(), min);
    QCOMPARE(m_column->maximum(), 59);
    QCOMPARE(m_edit->text(), text);
    QCOMPARE(m_edit->maxLength(), digits);
}

void TestTimeColumn::widthFitsTheDigits_data()
{
    QTest::addColumn<int>("max");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("widest");
    QTest::addColumn<int>("room");
    QTest::newRow("days") << 99 << 2 << ""
                          << "99" << 15;
    QTest::newRow("hours") << 23 << 2 << ":"
                           << "23" << 15;
    QTest::newRow("one digit") << 5 << 2 << ":"
                               << "05" << 15;
    QTest::newRow("milliseconds") << 999 << 3 << "."
                                  << "999" << 25;
}

void TestTimeColumn::widthFitsTheDigits()
{
    QFETCH(int, max);
    QFETCH(int, digits);
    QFETCH(QString, separator);
    QFETCH(QString, widest);
    QFETCH(int, room);
    const TimeColumn column(QStringLiteral("T"), 0, max, digits, separator, false);
    const auto* edit = column.findChild<QLineEdit*>();
    QCOMPARE(edit->font().pixelSize(), 10);
    const int width = edit->fontMetrics().horizontalAdvance(widest) + room;
    QCOMPARE(column.width(), width);
    QCOMPARE(column.minimumWidth(), width);
    QCOMPARE(column.maximumWidth(), width);
}

void TestTimeColumn::styleIsFixed()
{
    make(0, 23);
    QCOMPARE(m_edit->styleSheet(),
             QStringLiteral("QLineEdit {border: none;padding: 0px;background:#171717;"
                            "font-size: 10px;border-radius: 0;}"));
    QCOMPARE(m_edit->alignment() & Qt::AlignHorizontal_Mask, Qt::Alignment(Qt::AlignRight));
    int titles = 0;
    int separators = 0;
    int empty = 0;
    for (const QLabel* label : m_column->findChildren<QLabel*>()) {
        if (label->text() == QStringLiteral("HH")) {
            ++titles;
            QCOMPARE(label->alignment(), Qt::Alignment(Qt::AlignCenter));
            QCOMPARE(label->font().weight(), 50);
            QCOMPARE(label->font().pointSize(), 6);
            QCOMPARE(label->maximumHeight(), 12);
        } else if (label->text() == QStringLiteral(":")) {
            ++separators;
            QCOMPARE(label->styleSheet(),
                     QStringLiteral("background:#171717;font-size: 9px;border-radius: 0;"));
            QVERIFY(!label->isHidden());
        } else {
            ++empty;
            QCOMPARE(label->text(), QString());
            QCOMPARE(label->styleSheet(), QStringLiteral("border: none;"));
        }
    }
    QCOMPARE(titles, 1);
    QCOMPARE(separators, 1);
    QCOMPARE(empty, 1);
    const QList<QToolButton*> arrows = m_column->findChildren<QToolButton*>();
    QCOMPARE(arrows.size(), 2);
    QVERIFY(arrow(Qt::UpArrow));
    QVERIFY(arrow(Qt::DownArrow));
    for (const QToolButton* each : arrows) {
        QVERIFY(each->autoRaise());
        QCOMPARE(each->maximumHeight(), 12);
        QCOMPARE(each->styleSheet(), QStringLiteral("QToolButton { padding: 0px; border: none; }"));
    }
    QCOMPARE(m_column->layout()->spacing(), 0);
    QCOMPARE(m_column->layout()->contentsMargins(), QMargins());
}

void TestTimeColumn::firstColumnShowsNoSeparator()
{
    const TimeColumn column(QStringLiteral("DD"), 0, 99, 2, QStringLiteral(":"), true);
    for (const QLabel* label : column.findChildren<QLabel*>()) {
        if (label->text() == QStringLiteral(":")) {
            QVERIFY(label->isHidden());
        }
    }
}

void TestTimeColumn::valueIsClampedAndReportedOnce_data()
{
    QTest::addColumn<int>("set");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("reports");
    QTest::newRow("inside") << 12 << 12 << "12" << 1;
    QTest::newRow("padded") << 7 << 7 << "07" << 1;
    QTest::newRow("above") << 24 << 23 << "23" << 1;
    QTest::newRow("at the limit") << 23 << 23 << "23" << 1;
    QTest::newRow("below") << -1 << 2 << "02" << 1;
    QTest::newRow("the present one") << 5 << 5 << "05" << 0;
}

void TestTimeColumn::valueIsClampedAndReportedOnce()
{
    QFETCH(int, set);
    QFETCH(int, value);
    QFETCH(QString, text);
    QFETCH(int, reports);
    make(2, 23);
    m_column->setValue(5);
    QSignalSpy changed(m_column, &TimeColumn::valueChanged);
    m_column->setValue(set);
    QCOMPARE(m_column->value(), value);
    QCOMPARE(m_edit->text(), text);
    QCOMPARE(changed.count(), reports);
    if (reports > 0) {
        QCOMPARE(changed.at(0).at(0).toInt(), value);
    }
}

void TestTimeColumn::emptyRangeTakesItsMinimum()
{
    make(0, 23);
    m_column->setValue(5);
    m_column->setRange(10, 3);
    QCOMPARE(m_column->value(), 10);
}

void TestTimeColumn::setValuePutsTheCursorAtTheEnd()
{
    make(0, 23);
    m_edit->setCursorPosition(0);
    m_column->setValue(11);
    QCOMPARE(m_edit->cursorPosition(), 2);
}

void TestTimeColumn::rangeClampsTheValue()
{
    make(0, 59);
    m_column->setValue(40);
    QSignalSpy changed(m_column, &TimeColumn::valueChanged);
    m_column->setRange(0, 50);
    QCOMPARE(changed.count(), 0);
    m_column->setRange(0, 16);
    QCOMPARE(m_column->value(), 16);
    QCOMPARE(m_column->maximum(), 16);
    QCOMPARE(changed.count(), 1);
    m_column->setRange(20, 30);
    QCOMPARE(m_column->value(), 20);
    QCOMPARE(m_column->minimum(), 20);
}

void TestTimeColumn::arrowsStepAndStopAtTheLimits()
{
    make(0, 2);
    m_edit->setFocus();
    QSignalSpy changed(m_column, &TimeColumn::valueChanged);
    QTest::mouseClick(arrow(Qt::UpArrow), Qt::LeftButton);
    QTest::mouseClick(arrow(Qt::UpArrow), Qt::LeftButton);
    QCOMPARE(m_column->value(), 2);
    QCOMPARE(changed.count(), 2);
    QTest::mouseClick(arrow(Qt::UpArrow), Qt::LeftButton);
    QCOMPARE(m_column->value(), 2);
    QCOMPARE(changed.count(), 2);
    for (int i = 0; i < 3; ++i) {
        QTest::mouseClick(arrow(Qt::DownArrow), Qt::LeftButton);
    }
    QCOMPARE(m_column->value(), 0);
    QCOMPARE(changed.count(), 4);
    QVERIFY(m_edit->hasFocus());
}

void TestTimeColumn::arrowsStandOnlyWhileTheDigitsHaveTheFocus()
{
    make(0, 23);
    QLabel* title = nullptr;
    for (QLabel* label : m_column->findChildren<QLabel*>()) {
        title = label->text() == QStringLiteral("HH") ? label : title;
    }
    QVERIFY(title->isVisible());
    QVERIFY(!arrow(Qt::UpArrow)->isVisible());
    QVERIFY(!arrow(Qt::DownArrow)->isVisible());
    m_edit->setFocus();
    QVERIFY(!title->isVisible());
    QVERIFY(arrow(Qt::UpArrow)->isVisible());
    QVERIFY(arrow(Qt::DownArrow)->isVisible());
    m_other->setFocus();
    QVERIFY(title->isVisible());
    QVERIFY(!arrow(Qt::UpArrow)->isVisible());
    QVERIFY(!arrow(Qt::DownArrow)->isVisible());
}

void TestTimeColumn::keysInTheDigits_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("newText");
    QTest::addColumn<int>("newValue");
    QTest::addColumn<int>("newCursor");
    QTest::addColumn<int>("changes");
    QTest::addColumn<int>("nexts");
    QTest::addColumn<int>("prevs");
    const auto row = [](const char* name, int value, int cursor, int key, const char* newText,
                        int newValue, int newCursor, int changes, int nexts, int prevs) {
        QTest::newRow(name) << value << cursor << key << QString::fromLatin1(newText) << newValue
                            << newCursor << changes << nexts << prevs;
    };
    row("digit before the first", 5, 0, Qt::Key_1, "15", 15, 1, 1, 0, 0);
    row("digit before the last", 10, 1, Qt::Key_7, "17", 17, 2, 1, 0, 0);
    row("digit out of range: 29", 9, 0, Qt::Key_2, "09", 9, 1, 0, 0, 0);
    row("digit out of range: 24", 20, 1, Qt::Key_4, "20", 20, 2, 0, 0, 0);
    row("digit at the limit: 23", 20, 1, Qt::Key_3, "23", 23, 2, 1, 0, 0);
    row("the same digit is a change", 12, 0, Qt::Key_1, "12", 12, 1, 1, 0, 0);
    row("digit at the end goes on", 12, 2, Qt::Key_3, "12", 12, 2, 0, 1, 0);
    row("backspace at the end", 12, 2, Qt::Key_Backspace, "10", 12, 1, 0, 0, 0);
    row("backspace inside", 12, 1, Qt::Key_Backspace, "02", 12, 0, 0, 0, 0);
    row("backspace before the first", 12, 0, Qt::Key_Backspace, "12", 12, 0, 0, 0, 0);
    row("delete before the first", 12, 0, Qt::Key_Delete, "02", 12, 0, 0, 0, 0);
    row("delete inside", 12, 1, Qt::Key_Delete, "10", 12, 1, 0, 0, 0);
    row("delete at the end", 12, 2, Qt::Key_Delete, "12", 12, 2, 0, 0, 0);
    row("left inside", 12, 1, Qt::Key_Left, "12", 12, 0, 0, 0, 0);
    row("left before the first", 12, 0, Qt::Key_Left, "12", 12, 0, 0, 0, 1);
    row("right inside", 12, 1, Qt::Key_Right, "12", 12, 2, 0, 0, 0);
    row("right at the end", 12, 2, Qt::Key_Right, "12", 12, 2, 0, 1, 0);
}

void TestTimeColumn::keysInTheDigits()
{
    QFETCH(int, value);
    QFETCH(int, cursor);
    QFETCH(int, key);
    QFETCH(QString, newText);
    QFETCH(int, newValue);
    QFETCH(int, newCursor);
    QFETCH(int, changes);
    QFETCH(int, nexts);
    QFETCH(int, prevs);
    make(0, 23);
    m_column->setValue(value);
    m_edit->setFocus();
    m_edit->setCursorPosition(cursor);
    QSignalSpy changed(m_column, &TimeColumn::valueChanged);
    QSignalSpy next(m_column, &TimeColumn::focusNext);
    QSignalSpy prev(m_column, &TimeColumn::focusPrev);

    QTest::keyClick(m_edit, static_cast<Qt::Key>(key));

    QCOMPARE(m_edit->text(), newText);
    QCOMPARE(m_column->value(), newValue);
    QCOMPARE(m_edit->cursorPosition(), newCursor);
    QCOMPARE(changed.count(), changes);
    QCOMPARE(next.count(), nexts);
    QCOMPARE(prev.count(), prevs);
}

void TestTimeColumn::upAndDownInTheDigitsStep()
{
    make(0, 23);
    m_column->setValue(22);
    m_edit->setFocus();
    QTest::keyClick(m_edit, Qt::Key_Up);
    QCOMPARE(m_column->value(), 23);
    QTest::keyClick(m_edit, Qt::Key_Up);
    QCOMPARE(m_column->value(), 23);
    QTest::keyClick(m_edit, Qt::Key_Down);
    QCOMPARE(m_column->value(), 22);
    QVERIFY(m_edit->hasFocus());
}

void TestTimeColumn::upTakesTheTypedTextFirst()
{
    make(0, 23);
    m_column->setValue(12);
    m_edit->setFocus();
    m_edit->setCursorPosition(1);
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    QCOMPARE(m_edit->text(), QStringLiteral("02"));
    QTest::keyClick(m_edit, Qt::Key_Up);
    QCOMPARE(m_column->value(), 3);
    QCOMPARE(m_edit->text(), QStringLiteral("03"));
}

void TestTimeColumn::ctrlAndDigitIsNotTyped()
{
    make(0, 23);
    m_edit->setFocus();
    m_edit->setCursorPosition(0);
    QTest::keyClick(m_edit, Qt::Key_1, Qt::ControlModifier);
    QCOMPARE(m_edit->text(), QStringLiteral("00"));
    QCOMPARE(m_edit->cursorPosition(), 0);
    QTest::keyClick(m_edit, Qt::Key_1, Qt::KeypadModifier);
    QCOMPARE(m_edit->text(), QStringLiteral("10"));
}

void TestTimeColumn::bareModifierKeepsFocusAndSelection()
{
    make(0, 23);
    m_edit->setFocus();
    m_edit->selectAll();
    QSignalSpy finished(m_edit, &QLineEdit::editingFinished);
    QTest::keyClick(m_edit, Qt::Key_Control);
    QCOMPARE(finished.count(), 0);
    QCOMPARE(m_edit->selectedText(), QStringLiteral("00"));
    QVERIFY(m_edit->hasFocus());
}

void TestTimeColumn::backspaceCountsOnlyWhenEditingFinishes()
{
    make(0, 23);
    m_column->setValue(12);
    m_edit->setFocus();
    m_edit->setCursorPosition(1);
    QSignalSpy changed(m_column, &TimeColumn::valueChanged);
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    QCOMPARE(m_column->value(), 12);
    QTest::keyClick(m_edit, Qt::Key_Return);
    QCOMPARE(m_column->value(), 2);
    QCOMPARE(changed.count(), 0);
}

void TestTimeColumn::finishedEditing_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<int>("min");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<int>("value");
    QTest::newRow("cleared") << "" << 0 << "00" << 0;
    QTest::newRow("cleared, 0 out of range") << "" << 3 << "00" << 12;
    QTest::newRow("one digit") << "7" << 0 << "07" << 7;
    QTest::newRow("two digits") << "21" << 0 << "21" << 21;
    QTest::newRow("out of range is shown, not taken") << "77" << 0 << "77" << 12;
}

void TestTimeColumn::finishedEditing()
{
    QFETCH(QString, left);
    QFETCH(int, min);
    QFETCH(QString, shown);
    QFETCH(int, value);
    make(min, 23);
    m_column->setValue(12);
    m_edit->setFocus();
    QSignalSpy changed(m_column, &TimeColumn::valueChanged);
    m_edit->clear();
    m_edit->insert(left);
    m_other->setFocus();
    QCOMPARE(m_edit->text(), shown);
    QCOMPARE(m_column->value(), value);
    QCOMPARE(changed.count(), 0);
}

void TestTimeColumn::numberTooLargeToConvertShowsTheValueAgain()
{
    make(0, 59, 11);
    m_column->setValue(12);
    m_edit->setFocus();
    m_edit->clear();
    m_edit->insert(QStringLiteral("99999999999"));
    m_other->setFocus();
    QCOMPARE(m_edit->text(), QStringLiteral("00000000012"));
    QCOMPARE(m_column->value(), 12);
}

void TestTimeColumn::otherCharactersAreRemoved_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("inserted");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::newRow("letter") << ""
                            << "x"
                            << "" << 0;
    QTest::newRow("letter and digit") << ""
                                      << "x7"
                                      << "7" << 1;
    QTest::newRow("digit and letter") << ""
                                      << "7x"
                                      << "7" << 1;
    QTest::newRow("letter behind a digit") << "5"
                                           << "-"
                                           << "5" << 1;
    QTest::newRow("digit of another script") << ""
                                             << "٣"
                                             << "" << 0;
    QTest::newRow("digits") << ""
                            << "42"
                            << "42" << 2;
}

void TestTimeColumn::otherCharactersAreRemoved()
{
    QFETCH(QString, before);
    QFETCH(QString, inserted);
    QFETCH(QString, text);
    QFETCH(int, cursor);
    make(0, 99);
    m_edit->setFocus();
    m_edit->clear();
    m_edit->insert(before);
    m_edit->insert(inserted);
    QCOMPARE(m_edit->text(), text);
    QCOMPARE(m_edit->cursorPosition(), cursor);
}

void TestTimeColumn::guardDoesNotOutliveAChangeThatChangesNothing()
{
    make(0, 23);
    m_column->setValue(10);
    m_edit->setFocus();
    m_edit->setCursorPosition(1);
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    QCOMPARE(m_edit->text(), QStringLiteral("00"));
    // The digits already read 00, so this changes the value but not the text.
    m_column->setValue(0);
    QCOMPARE(m_column->value(), 0);
    QCOMPARE(m_edit->cursorPosition(), 2);
    // One change of the text: a leftover guard would let it through.
    m_edit->selectAll();
    m_edit->insert(QStringLiteral("x"));
    QCOMPARE(m_edit->text(), QString());
}

void TestTimeColumn::keysOfTheColumnItself()
{
    make(0, 23);
    QSignalSpy next(m_column, &TimeColumn::focusNext);
    QSignalSpy prev(m_column, &TimeColumn::focusPrev);
    m_edit->setCursorPosition(1);
    QTest::keyClick(m_column, Qt::Key_Up);
    QCOMPARE(m_column->value(), 1);
    QVERIFY(m_edit->hasFocus());
    QTest::keyClick(m_column, Qt::Key_Down);
    QCOMPARE(m_column->value(), 0);

    m_edit->setCursorPosition(1);
    QTest::keyClick(m_column, Qt::Key_Left);
    QTest::keyClick(m_column, Qt::Key_Right);
    QCOMPARE(prev.count(), 0);
    QCOMPARE(next.count(), 0);
    m_edit->setCursorPosition(0);
    QTest::keyClick(m_column, Qt::Key_Left);
    QCOMPARE(prev.count(), 1);
    m_edit->setCursorPosition(2);
    QTest::keyClick(m_column, Qt::Key_Right);
    QCOMPARE(next.count(), 1);
}

void TestTimeColumn::focusOfTheColumnGoesToTheDigits()
{
    make(0, 23);
    m_column->setFocus();
    QVERIFY(m_edit->hasFocus());
    QVERIFY(arrow(Qt::UpArrow)->isVisible());
}

void TestTimeColumn::columnGoesWhileItIsEdited()
{
    // A window hides on its way out, and takes the focus from its edit.
    auto column =
        std::make_unique<TimeColumn>(QStringLiteral("HH"), 0, 23, 2, QStringLiteral(":"), false);
    column->show();
    QVERIFY(QTest::qWaitForWindowActive(column.get()));
    auto* edit = column->findChild<QLineEdit*>();
    QTest::mouseClick(edit, Qt::LeftButton);
    QVERIFY(edit->hasFocus());
    const QSignalSpy finished(edit, &QLineEdit::editingFinished);
    column.reset();
    QCOMPARE(finished.count(), 1);
}

SCN_TEST(TestTimeColumn, QApplication)
#include "test_timecolumn.moc"
