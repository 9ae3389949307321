#include "support/testprogram.h"
#include "widgets/timecolumn.h"
#include "widgets/timepicker.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <memory>

namespace {

enum Column { Days, Hours, Minutes, Seconds, Milliseconds };

} // namespace

class TestTimePicker : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startsWithTenSecondsAndNoMilliseconds();
    void columnsHaveTheirTitlesAndSeparators();
    void columnsStandInTheirOrder();
    void limitsFollowTheMaximum_data();
    void limitsFollowTheMaximum();
    void valueIsTheSumOfTheColumns();
    void hiddenMillisecondsAreNotSet();
    void reportsAfterEachRangeUpdate();
    void ownShareIsTakenOffTwice();
    void clampedColumnRunsTheUpdateInside();
    void timeAboveTheMaximumIsClamped();
    void typedDigitOutOfRangeIsRefused();
    void typedDigitIsReported();
    void arrowAtTheLimitEmitsNothing();
    void typingAtTheEndGoesToTheNextColumn();
    void focusWrapsForward_data();
    void focusWrapsForward();
    void focusWrapsBackward_data();
    void focusWrapsBackward();
    void clearedColumnBecomesZero();
    void showingMillisecondsTwiceDoesNothing();
    void fitsTheWidthsOfTheForm_data();
    void fitsTheWidthsOfTheForm();

private:
    TimeColumn* column(int index) const { return m_picker->findChildren<TimeColumn*>().at(index); }
    QLineEdit* edit(int index) const { return column(index)->findChild<QLineEdit*>(); }
    QToolButton* upArrow(int index) const;
    QVector<int> limits() const;
    QVector<int> values() const;

    std::unique_ptr<QWidget> m_window;
    TimePicker* m_picker = nullptr;
};

void TestTimePicker::init()
{
    m_window = std::make_unique<QWidget>();
    auto* layout = new QHBoxLayout(m_window.get());
    m_picker = new TimePicker;
    layout->addWidget(m_picker);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestTimePicker::cleanup()
{
    m_window.reset();
}

QToolButton* TestTimePicker::upArrow(int index) const
{
    for (QToolButton* button : column(index)->findChildren<QToolButton*>()) {
        if (button->arrowType() == Qt::UpArrow) {
            return button;
        }
    }
    return nullptr;
}

QVector<int> TestTimePicker::limits() const
{
    QVector<int> all;
    for (const TimeColumn* each : m_picker->findChildren<TimeColumn*>()) {
        all << each->maximum();
    }
    return all;
}

QVector<int> TestTimePicker::values() const
{
    QVector<int> all;
    for (const TimeColumn* each : m_picker->findChildren<TimeColumn*>()) {
        all << each->value();
    }
    return all;
}

void TestTimePicker::startsWithTenSecondsAndNoMilliseconds()
{
    QCOMPARE(m_picker->value(), 10.0);
    QCOMPARE(values(), QVector<int>({0, 0, 0, 10, 0}));
    QCOMPARE(edit(Days)->text(), QStringLiteral("00"));
    QCOMPARE(edit(Hours)->text(), QStringLiteral("00"));
    QCOMPARE(edit(Minutes)->text(), QStringLiteral("00"));
    QCOMPARE(edit(Seconds)->text(), QStringLiteral("10"));
    for (const int shown : {Days, Hours, Minutes, Seconds}) {
        QVERIFY(column(shown)->isVisible());
    }
    QVERIFY(!column(Milliseconds)->isVisible());
    QCOMPARE(m_picker->focusPolicy(), Qt::StrongFocus);
}

void TestTimePicker::columnsHaveTheirTitlesAndSeparators()
{
    const QVector<QStringList> labels = {{QStringLiteral("DD"), QString()},
                                         {QStringLiteral("HH"), QStringLiteral(":")},
                                         {QStringLiteral("MM"), QStringLiteral(":")},
                                         {QStringLiteral("SS"), QStringLiteral(":")},
                                         {QStringLiteral("MS"), QStringLiteral(".")}};
    for (int i = 0; i < labels.size(); ++i) {
        QStringList texts;
        for (const QLabel* label : column(i)->findChildren<QLabel*>()) {
            texts << label->text();
        }
        QVERIFY(texts.contains(labels.at(i).at(0)));
        QVERIFY(texts.contains(labels.at(i).at(1)));
        QCOMPARE(edit(i)->maxLength(), i == Milliseconds ? 3 : 2);
        QCOMPARE(column(i)->minimum(), 0);
    }
}

void TestTimePicker::columnsStandInTheirOrder()
{
    const auto* layout = qobject_cast<QHBoxLayout*>(m_picker->layout());
    QVERIFY(layout);
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->count(), 5);
    for (int i = Days; i <= Milliseconds; ++i) {
        QCOMPARE(layout->itemAt(i)->widget(), column(i));
    }
}

void TestTimePicker::limitsFollowTheMaximum_data()
{
    QTest::addColumn<double>("maximum");
    QTest::addColumn<QVector<int>>("limits");
    QTest::addColumn<double>("value");
    // The value is 10 s before the maximum is set.
    QTest::newRow("1000 s") << 1000.0 << QVector<int>({0, 0, 16, 59, 999}) << 10.0;
    QTest::newRow("100 hours") << 360000.0 << QVector<int>({4, 23, 59, 59, 999}) << 10.0;
    QTest::newRow("23 days") << 1987200.0 << QVector<int>({22, 23, 59, 59, 999}) << 10.0;
    QTest::newRow("115 days") << 1e7 << QVector<int>({99, 23, 59, 59, 999}) << 10.0;
    QTest::newRow("beyond any int") << 1e30 << QVector<int>({99, 23, 59, 59, 999}) << 10.0;
    QTest::newRow("exactly an hour left") << 3610.0 << QVector<int>({0, 1, 59, 59, 999}) << 10.0;
    QTest::newRow("just under an hour left")
        << 3609.999 << QVector<int>({0, 0, 59, 59, 999}) << 10.0;
    QTest::newRow("a minute and a half") << 90.0 << QVector<int>({0, 0, 1, 59, 999}) << 10.0;
    QTest::newRow("59.5 s") << 59.5 << QVector<int>({0, 0, 0, 49, 999}) << 10.0;
    QTest::newRow("20.25 s") << 20.25 << QVector<int>({0, 0, 0, 10, 250}) << 10.0;
    QTest::newRow("twice the seconds") << 20.0 << QVector<int>({0, 0, 0, 10, 0}) << 10.0;
    // Half a second is left, which clamps the seconds to 0; the update inside gives them 10 again.
    QTest::newRow("10.5 s") << 10.5 << QVector<int>({0, 0, 0, 10, 0}) << 0.0;
    QTest::newRow("nothing") << 0.0 << QVector<int>({0, 0, 0, 0, 0}) << 0.0;
    QTest::newRow("negative") << -5.0 << QVector<int>({0, 0, 0, 0, 0}) << 0.0;
}

void TestTimePicker::limitsFollowTheMaximum()
{
    QFETCH(double, maximum);
    QFETCH(QVector<int>, limits);
    QFETCH(double, value);
    m_picker->setMaximum(maximum);
    QCOMPARE(this->limits(), limits);
    QCOMPARE(m_picker->value(), value);
}

void TestTimePicker::valueIsTheSumOfTheColumns()
{
    m_picker->setMaximum(360000);
    m_picker->setMillisecondsVisible(true);
    m_picker->setTime(1, 2, 3, 4, 5);
    QCOMPARE(values(), QVector<int>({1, 2, 3, 4, 5}));
    QCOMPARE(m_picker->value(), 86400 + 2 * 3600 + 3 * 60 + 4 + 0.005);
    // What is hidden still counts.
    m_picker->setMillisecondsVisible(false);
    QCOMPARE(m_picker->value(), 86400 + 2 * 3600 + 3 * 60 + 4 + 0.005);
}

void TestTimePicker::hiddenMillisecondsAreNotSet()
{
    m_picker->setTime(0, 0, 0, 20, 500);
    QCOMPARE(m_picker->value(), 20.0);
}

void TestTimePicker::reportsAfterEachRangeUpdate()
{
    QSignalSpy changed(m_picker, &TimePicker::sigTimePickerValueChanged);
    m_picker->setMaximum(360000);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toDouble(), 10.0);
    changed.clear();
    m_picker->setTime(1, 2, 0, 10, 0);
    // Two columns changed, and once at the end.
    QCOMPARE(changed.count(), 3);
    QCOMPARE(changed.at(0).at(0).toDouble(), 86410.0);
    QCOMPARE(changed.at(1).at(0).toDouble(), 93610.0);
    QCOMPARE(changed.at(2).at(0).toDouble(), 93610.0);
}

void TestTimePicker::ownShareIsTakenOffTwice()
{
    m_picker->setMaximum(7200);
    m_picker->setTime(0, 0, 50, 0, 0);
    // 7200 - 3000 = 4200 s are left: an hour fits; less the 3000 s again, 1200 s for the seconds.
    QCOMPARE(values(), QVector<int>({0, 0, 50, 0, 0}));
    QCOMPARE(limits(), QVector<int>({0, 1, 59, 59, 999}));
    // A day of 200000 s leaves 113600 s: less the day again, 27200 s for the hours.
    m_picker->setMaximum(200000);
    m_picker->setTime(1, 0, 0, 0, 0);
    QCOMPARE(values(), QVector<int>({1, 0, 0, 0, 0}));
    QCOMPARE(limits(), QVector<int>({1, 7, 59, 59, 999}));
    // Five hours of 38000 s leave 20000 s: less the hours again, 2000 s for the minutes.
    m_picker->setTime(0, 0, 0, 0, 0);
    m_picker->setMaximum(38000);
    m_picker->setTime(0, 5, 0, 0, 0);
    QCOMPARE(values(), QVector<int>({0, 5, 0, 0, 0}));
    QCOMPARE(limits(), QVector<int>({0, 5, 33, 59, 999}));
    m_picker->setTime(0, 0, 0, 0, 0);
    m_picker->setMaximum(7200);
    m_picker->setTime(0, 0, 50, 0, 0);
    m_picker->setTime(0, 1, 0, 0, 0);
    // Setting the hour left 600 s: 0 hours and, less the hour once more, 0 minutes.
    QVERIFY(m_picker->value() < 7200);
    QCOMPARE(column(Hours)->value(), 0);
}

void TestTimePicker::clampedColumnRunsTheUpdateInside()
{
    QSignalSpy changed(m_picker, &TimePicker::sigTimePickerValueChanged);
    m_picker->setTime(0, 0, 10, 0, 0);
    // 10 minutes and 10 seconds leave 390 s, so 6 minutes; the update that the clamp starts
    // reports 370 s. The outer pass still takes 600 s off 390 s and clamps the seconds to 0, which
    // reports 360 s, as do its own end and the end of setTime().
    QCOMPARE(values(), QVector<int>({0, 0, 6, 0, 0}));
    QVector<double> reported;
    for (const QList<QVariant>& arguments : qAsConst(changed)) {
        reported << arguments.at(0).toDouble();
    }
    QCOMPARE(reported, QVector<double>({370, 360, 360, 360}));
    QCOMPARE(limits(), QVector<int>({0, 0, 10, 59, 999}));
}

void TestTimePicker::timeAboveTheMaximumIsClamped()
{
    m_picker->setTime(99, 23, 59, 59, 0);
    QVERIFY(m_picker->value() <= 1000);
    QCOMPARE(column(Days)->value(), 0);
    QCOMPARE(column(Hours)->value(), 0);
}

void TestTimePicker::typedDigitOutOfRangeIsRefused()
{
    m_picker->setMaximum(1e7);
    m_picker->setTime(0, 9, 0, 0, 0);
    edit(Hours)->setFocus();
    edit(Hours)->setCursorPosition(0);
    QTest::keyClick(edit(Hours), Qt::Key_2);
    QCOMPARE(edit(Hours)->text(), QStringLiteral("09"));
    QCOMPARE(edit(Hours)->cursorPosition(), 1);
    QCOMPARE(m_picker->value(), 9 * 3600.0);
}

void TestTimePicker::typedDigitIsReported()
{
    QSignalSpy changed(m_picker, &TimePicker::sigTimePickerValueChanged);
    edit(Seconds)->setFocus();
    edit(Seconds)->setCursorPosition(1);
    QTest::keyClick(edit(Seconds), Qt::Key_5);
    QCOMPARE(m_picker->value(), 15.0);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toDouble(), 15.0);
}

void TestTimePicker::arrowAtTheLimitEmitsNothing()
{
    m_picker->setMaximum(1e7);
    m_picker->setTime(0, 0, 0, 59, 0);
    QSignalSpy changed(m_picker, &TimePicker::sigTimePickerValueChanged);
    edit(Seconds)->setFocus();
    QTest::mouseClick(upArrow(Seconds), Qt::LeftButton);
    QCOMPARE(m_picker->value(), 59.0);
    QCOMPARE(changed.count(), 0);
}

void TestTimePicker::typingAtTheEndGoesToTheNextColumn()
{
    edit(Hours)->setFocus();
    edit(Hours)->setCursorPosition(2);
    edit(Minutes)->setCursorPosition(2);
    QTest::keyClick(edit(Hours), Qt::Key_5);
    QVERIFY(edit(Minutes)->hasFocus());
    QCOMPARE(edit(Minutes)->cursorPosition(), 0);
    QCOMPARE(edit(Minutes)->text(), QStringLiteral("00"));
    QCOMPARE(edit(Hours)->text(), QStringLiteral("00"));
    QTest::keyClick(edit(Minutes), Qt::Key_Left);
    QVERIFY(edit(Hours)->hasFocus());
}

void TestTimePicker::focusWrapsForward_data()
{
    QTest::addColumn<bool>("milliseconds");
    QTest::addColumn<int>("last");
    QTest::newRow("seconds last") << false << int(Seconds);
    QTest::newRow("milliseconds last") << true << int(Milliseconds);
}

void TestTimePicker::focusWrapsForward()
{
    QFETCH(bool, milliseconds);
    QFETCH(int, last);
    m_picker->setMillisecondsVisible(true);
    m_picker->setMillisecondsVisible(milliseconds);
    edit(Days)->setFocus();
    for (int i = 0; i < last; ++i) {
        QVERIFY(edit(i)->hasFocus());
        edit(i)->end(false);
        QTest::keyClick(edit(i), Qt::Key_Right);
    }
    QVERIFY(edit(last)->hasFocus());
    edit(last)->end(false);
    QTest::keyClick(edit(last), Qt::Key_1);
    QVERIFY(edit(Days)->hasFocus());
    QCOMPARE(edit(Days)->cursorPosition(), 0);
}

void TestTimePicker::focusWrapsBackward_data()
{
    focusWrapsForward_data();
}

void TestTimePicker::focusWrapsBackward()
{
    QFETCH(bool, milliseconds);
    QFETCH(int, last);
    m_picker->setMillisecondsVisible(true);
    m_picker->setMillisecondsVisible(milliseconds);
    edit(Days)->setFocus();
    edit(Days)->home(false);
    QTest::keyClick(edit(Days), Qt::Key_Left);
    QVERIFY(edit(last)->hasFocus());
    edit(last)->home(false);
    QTest::keyClick(edit(last), Qt::Key_Left);
    QVERIFY(edit(last - 1)->hasFocus());
}

void TestTimePicker::clearedColumnBecomesZero()
{
    edit(Seconds)->setFocus();
    edit(Seconds)->selectAll();
    QTest::keyClick(edit(Seconds), Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(edit(Seconds)->text(), QString());
    edit(Days)->setFocus();
    QCOMPARE(edit(Seconds)->text(), QStringLiteral("00"));
    QCOMPARE(column(Seconds)->value(), 0);
    QCOMPARE(m_picker->value(), 0.0);
}

void TestTimePicker::showingMillisecondsTwiceDoesNothing()
{
    m_picker->setMillisecondsVisible(false);
    QVERIFY(!column(Milliseconds)->isVisible());
    const int narrow = m_picker->sizeHint().width();
    m_picker->setMillisecondsVisible(true);
    QVERIFY(column(Milliseconds)->isVisible());
    QCOMPARE(m_picker->sizeHint().width(), narrow + column(Milliseconds)->width());
    m_picker->setMillisecondsVisible(true);
    QVERIFY(column(Milliseconds)->isVisible());
    m_picker->setMillisecondsVisible(false);
    QVERIFY(!column(Milliseconds)->isVisible());
    QCOMPARE(m_picker->sizeHint().width(), narrow);
}

void TestTimePicker::fitsTheWidthsOfTheForm_data()
{
    QTest::addColumn<bool>("milliseconds");
    QTest::addColumn<int>("width");
    QTest::newRow("interval") << true << 180;
    QTest::newRow("elapsed time") << false << 136;
}

void TestTimePicker::fitsTheWidthsOfTheForm()
{
    QFETCH(bool, milliseconds);
    QFETCH(int, width);
    m_picker->setMillisecondsVisible(milliseconds);
    QVERIFY2(m_picker->minimumSizeHint().width() <= width,
             qPrintable(QString::number(m_picker->minimumSizeHint().width())));
}

SCN_TEST(TestTimePicker, QApplication)
#include "test_timepicker.moc"
