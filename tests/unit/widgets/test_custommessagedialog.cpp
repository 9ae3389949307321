#include "support/testprogram.h"
#include "support/timerhand.h"
#include "widgets/custommessagedialog.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStyle>
#include <QTest>
#include <QTimer>

class TestCustomMessageDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void oneInstanceWithTheParentOfTheFirstCall();
    void newInstanceAfterTheParentIsGone();
    void staysOnTopWithoutFrameAndIsNotModal();
    void groundAndTextHaveTheirColours();
    void kindChoosesTitleAndIcon_data();
    void kindChoosesTitleAndIcon();
    void hidesAfterItsTimeAndNotBefore();
    void staysOpenWithoutATime_data();
    void staysOpenWithoutATime();
    void newMessageReplacesTheOldOneAndItsTime();
    void messageWithoutATimeOutlivesTheTimeOfTheOldOne();
    void timerIsPreciseBelowTwoSeconds_data();
    void timerIsPreciseBelowTwoSeconds();
    void closeButtonCloses();
};

namespace {

CustomMessageDialog* box()
{
    return CustomMessageDialog::instance(nullptr);
}

QLabel* textLabel()
{
    for (QLabel* label : box()->findChildren<QLabel*>()) {
        if (!label->text().isEmpty()) {
            return label;
        }
    }
    return nullptr;
}

QLabel* iconLabel()
{
    for (QLabel* label : box()->findChildren<QLabel*>()) {
        if (label->text().isEmpty()) {
            return label;
        }
    }
    return nullptr;
}

} // namespace

void TestCustomMessageDialog::cleanup()
{
    box()->hide();
}

void TestCustomMessageDialog::oneInstanceWithTheParentOfTheFirstCall()
{
    QWidget first;
    QWidget second;
    delete box();
    CustomMessageDialog* made = CustomMessageDialog::instance(&first);
    QCOMPARE(made->parentWidget(), &first);
    QCOMPARE(CustomMessageDialog::instance(&second), made);
    QCOMPARE(made->parentWidget(), &first);
}

void TestCustomMessageDialog::newInstanceAfterTheParentIsGone()
{
    delete box();
    QPointer<CustomMessageDialog> made;
    {
        QWidget parent;
        made = CustomMessageDialog::instance(&parent);
        made->showMessage(QStringLiteral("text"), 0, 20);
    }
    QVERIFY(!made);
    box()->showMessage(QStringLiteral("again"), 2, 0);
    QVERIFY(box()->isVisible());
    QVERIFY(textLabel());
    QCOMPARE(textLabel()->text(), QStringLiteral("again"));
}

void TestCustomMessageDialog::staysOnTopWithoutFrameAndIsNotModal()
{
    QCOMPARE(box()->windowType(), Qt::Dialog);
    QVERIFY(box()->windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(box()->windowFlags() & Qt::WindowStaysOnTopHint);
    box()->showMessage(QStringLiteral("text"), 0, 0);
    QVERIFY(!box()->isModal());
}

void TestCustomMessageDialog::groundAndTextHaveTheirColours()
{
    box()->showMessage(QStringLiteral("text"), 0, 0);
    QCOMPARE(box()->grab().toImage().pixelColor(1, 1), QColor(87, 87, 87));
    QCOMPARE(textLabel()->palette().color(QPalette::WindowText), QColor(Qt::white));
    QCOMPARE(textLabel()->font().pixelSize(), 12);
}

void TestCustomMessageDialog::kindChoosesTitleAndIcon_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("icon");
    QTest::newRow("warning") << 0 << QStringLiteral("警告") << -1;
    QTest::newRow("error") << 1 << QStringLiteral("错误") << int(QStyle::SP_MessageBoxCritical);
    QTest::newRow("information") << 2 << QStringLiteral("信息")
                                 << int(QStyle::SP_MessageBoxInformation);
    QTest::newRow("unknown") << 7 << QStringLiteral("警告") << -1;
    QTest::newRow("negative") << -1 << QStringLiteral("警告") << -1;
}

void TestCustomMessageDialog::kindChoosesTitleAndIcon()
{
    QFETCH(int, kind);
    QFETCH(QString, title);
    QFETCH(int, icon);
    box()->showMessage(QStringLiteral("机器已断开"), kind, 0);
    QVERIFY(box()->isVisible());
    QCOMPARE(box()->windowTitle(), title);
    QCOMPARE(textLabel()->text(), QStringLiteral("机器已断开"));
    QVERIFY(iconLabel());
    QCOMPARE(iconLabel()->isVisible(), icon >= 0);
    if (icon >= 0) {
        const QIcon expected =
            box()->style()->standardIcon(static_cast<QStyle::StandardPixmap>(icon));
        const QPixmap shown = iconLabel()->pixmap(Qt::ReturnByValue);
        QVERIFY(!shown.isNull());
        QCOMPARE(shown.toImage(), expected.pixmap(24).toImage());
    }
}

void TestCustomMessageDialog::hidesAfterItsTimeAndNotBefore()
{
    QElapsedTimer clock;
    clock.start();
    box()->showMessage(QStringLiteral("text"), 0, 200);
    QVERIFY(box()->isVisible());
    QTRY_VERIFY(!box()->isVisible());
    QVERIFY2(clock.elapsed() >= 200, qPrintable(QString::number(clock.elapsed())));
}

void TestCustomMessageDialog::staysOpenWithoutATime_data()
{
    QTest::addColumn<int>("msec");
    QTest::newRow("zero") << 0;
    QTest::newRow("negative") << -1;
    QTest::newRow("very negative") << -3000;
}

void TestCustomMessageDialog::staysOpenWithoutATime()
{
    QFETCH(int, msec);
    box()->showMessage(QStringLiteral("text"), 0, msec);
    QCoreApplication::processEvents();
    QVERIFY(box()->isVisible());
    for (const QTimer* timer : box()->findChildren<QTimer*>()) {
        QVERIFY(!timer->isActive());
    }
    box()->close();
    QVERIFY(!box()->isVisible());
}

void TestCustomMessageDialog::newMessageReplacesTheOldOneAndItsTime()
{
    box()->showMessage(QStringLiteral("first"), 1, 100);
    QTimer* const hide = box()->findChild<QTimer*>();
    QVERIFY(hide->isActive());
    QCOMPARE(hide->interval(), 100);
    box()->showMessage(QStringLiteral("second"), 2, 300);
    QVERIFY(hide->isActive());
    QCOMPARE(hide->interval(), 300);
    QCOMPARE(textLabel()->text(), QStringLiteral("second"));
    QCOMPARE(box()->windowTitle(), QStringLiteral("信息"));
    runOut(hide);
    QVERIFY(!box()->isVisible());
}

void TestCustomMessageDialog::messageWithoutATimeOutlivesTheTimeOfTheOldOne()
{
    box()->showMessage(QStringLiteral("first"), 1, 50);
    box()->showMessage(QStringLiteral("second"), 1, 0);
    QVERIFY(!box()->findChild<QTimer*>()->isActive());
    QVERIFY(box()->isVisible());
}

void TestCustomMessageDialog::timerIsPreciseBelowTwoSeconds_data()
{
    QTest::addColumn<int>("msec");
    QTest::addColumn<int>("type");
    QTest::newRow("1999 ms") << 1999 << int(Qt::PreciseTimer);
    QTest::newRow("2000 ms") << 2000 << int(Qt::CoarseTimer);
    QTest::newRow("3000 ms") << 3000 << int(Qt::CoarseTimer);
}

void TestCustomMessageDialog::timerIsPreciseBelowTwoSeconds()
{
    QFETCH(int, msec);
    QFETCH(int, type);
    box()->showMessage(QStringLiteral("text"), 0, msec);
    const QList<QTimer*> timers = box()->findChildren<QTimer*>();
    QCOMPARE(timers.size(), 1);
    QVERIFY(timers.first()->isActive());
    QVERIFY(timers.first()->isSingleShot());
    QCOMPARE(timers.first()->interval(), msec);
    QCOMPARE(int(timers.first()->timerType()), type);
}

void TestCustomMessageDialog::closeButtonCloses()
{
    box()->showMessage(QStringLiteral("text"), 0, 0);
    auto* button = box()->findChild<QPushButton*>();
    QVERIFY(button);
    QCOMPARE(button->text(), QStringLiteral("X"));
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(!box()->isVisible());
}

SCN_TEST(TestCustomMessageDialog, QApplication)
#include "test_custommessagedialog.moc"
