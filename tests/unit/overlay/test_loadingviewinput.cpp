#include "overlay/loadingview.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

constexpr int kBusy = 0;
constexpr int kRecovery = 1;

} // namespace

/// Who gets keys, clicks and the wheel while a view is up and after it.
class TestLoadingViewInput : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void keysDoNotReachWhatIsCovered();
    void focusComesBackToAnUnfinishedEdit();
    void focusComesBackFromUnderTwoViews_data();
    void focusComesBackFromUnderTwoViews();
    void shownWithItsWindowTakesTheFocus();
    void tabStaysOnTheView();
    void recoveryButtonWorksByKeyboard();
    void wheelDoesNotReachWhatIsCovered();
    void openListOfWhatIsCoveredCloses();

private:
    void type(Qt::Key key) const;

    std::unique_ptr<QWidget> m_parent;
};

void TestLoadingViewInput::init()
{
    m_parent = std::make_unique<QWidget>();
    m_parent->resize(400, 400);
    m_parent->show();
    QVERIFY(QTest::qWaitForWindowActive(m_parent.get()));
}

void TestLoadingViewInput::cleanup()
{
    m_parent.reset();
}

/// A key press, delivered to whatever has the focus in the parent's window.
void TestLoadingViewInput::type(Qt::Key key) const
{
    QTest::keyClick(m_parent->windowHandle(), key);
}

void TestLoadingViewInput::keysDoNotReachWhatIsCovered()
{
    QPushButton button(m_parent.get());
    button.show();
    button.setFocus();
    const QSignalSpy clicked(&button, &QPushButton::clicked);
    type(Qt::Key_Space);
    QCOMPARE(clicked.size(), 1);

    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    QVERIFY(!button.hasFocus());
    type(Qt::Key_Space);
    // The program may focus a covered control: that does not open it either.
    button.setFocus();
    type(Qt::Key_Space);
    QCOMPARE(clicked.size(), 1);

    view.stopLoading();
    QVERIFY(button.hasFocus());
    type(Qt::Key_Space);
    QCOMPARE(clicked.size(), 2);
}

void TestLoadingViewInput::focusComesBackToAnUnfinishedEdit()
{
    QLineEdit edit(m_parent.get());
    edit.show();
    edit.setFocus();
    const QSignalSpy finished(&edit, &QLineEdit::editingFinished);
    type(Qt::Key_1);

    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    type(Qt::Key_2);
    QCOMPARE(edit.text(), QStringLiteral("1"));
    // A command sent under the cover would be the edit's last act before the recovery.
    QCOMPARE(finished.size(), 0);

    view.stopLoading();
    QVERIFY(edit.hasFocus());
    type(Qt::Key_3);
    QCOMPARE(edit.text(), QStringLiteral("13"));
    type(Qt::Key_Return);
    QCOMPARE(finished.size(), 1);
}

void TestLoadingViewInput::focusComesBackFromUnderTwoViews_data()
{
    QTest::addColumn<bool>("lowerFirst");
    QTest::newRow("the lower one goes first") << true;
    QTest::newRow("the upper one goes first") << false;
}

void TestLoadingViewInput::focusComesBackFromUnderTwoViews()
{
    QFETCH(bool, lowerFirst);
    QLineEdit edit(m_parent.get());
    edit.show();
    edit.setFocus();
    const QSignalSpy finished(&edit, &QLineEdit::editingFinished);
    type(Qt::Key_1);

    LoadingView busy(kBusy, m_parent.get());
    LoadingView recovery(kRecovery, m_parent.get());
    const QSignalSpy confirmed(&recovery, &LoadingView::confirmRequested);
    busy.showLoading();
    recovery.showLoading();
    LoadingView& first = lowerFirst ? busy : recovery;
    LoadingView& last = lowerFirst ? recovery : busy;
    first.stopLoading();
    type(Qt::Key_2);
    QCOMPARE(edit.text(), QStringLiteral("1"));
    QVERIFY(QApplication::focusWidget() == &last || last.isAncestorOf(QApplication::focusWidget()));
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), lowerFirst ? 1 : 0);

    last.stopLoading();
    QVERIFY(edit.hasFocus());
    type(Qt::Key_3);
    QCOMPARE(edit.text(), QStringLiteral("13"));
    QCOMPARE(finished.size(), 0);
    type(Qt::Key_Return);
    QCOMPARE(finished.size(), 1);
}

void TestLoadingViewInput::shownWithItsWindowTakesTheFocus()
{
    QLineEdit edit(m_parent.get());
    edit.show();
    edit.setFocus();
    m_parent->hide();
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    m_parent->show();
    QVERIFY(QTest::qWaitForWindowActive(m_parent.get()));
    type(Qt::Key_1);
    QCOMPARE(edit.text(), QString());
    view.stopLoading();
    type(Qt::Key_2);
    QCOMPARE(edit.text(), QStringLiteral("2"));
}

void TestLoadingViewInput::tabStaysOnTheView()
{
    QPushButton button(m_parent.get());
    button.show();
    button.setFocus();
    LoadingView view(kRecovery, m_parent.get());
    view.showLoading();
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Tab}) {
        type(key);
        QVERIFY(view.findChild<QPushButton*>()->hasFocus());
    }
    // From a covered control, too, Tab leads to the button.
    button.setFocus();
    type(Qt::Key_Tab);
    QVERIFY(view.isAncestorOf(QApplication::focusWidget()));
}

void TestLoadingViewInput::recoveryButtonWorksByKeyboard()
{
    QPushButton button(m_parent.get());
    button.show();
    button.setFocus();
    const QSignalSpy clicked(&button, &QPushButton::clicked);
    LoadingView view(kRecovery, m_parent.get());
    const QSignalSpy confirmed(&view, &LoadingView::confirmRequested);
    view.showLoading();
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 1);
    // The ring turns now, and nothing is left to press.
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 1);

    // The recovery has failed: the form is active again.
    view.stopLoading();
    view.showLoading();
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 2);
    view.showLoading();
    type(Qt::Key_Space);
    QCOMPARE(confirmed.size(), 3);

    view.stopLoading();
    QVERIFY(button.hasFocus());
    QCOMPARE(clicked.size(), 0);
}

void TestLoadingViewInput::wheelDoesNotReachWhatIsCovered()
{
    QComboBox box(m_parent.get());
    box.addItems({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    box.setCurrentIndex(1);
    box.show();
    const auto turn = [this, &box] {
        const QPoint place = box.mapTo(m_parent.get(), box.rect().center());
        QWheelEvent event(place, m_parent->mapToGlobal(place), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(m_parent->windowHandle(), &event);
    };
    turn();
    QCOMPARE(box.currentIndex(), 2);
    box.setCurrentIndex(1);
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    turn();
    QCOMPARE(box.currentIndex(), 1);
    view.stopLoading();
    turn();
    QCOMPARE(box.currentIndex(), 2);
}

void TestLoadingViewInput::openListOfWhatIsCoveredCloses()
{
    QComboBox box(m_parent.get());
    box.addItems({QStringLiteral("1"), QStringLiteral("2")});
    box.show();
    QTest::mouseClick(&box, Qt::LeftButton);
    QVERIFY(QApplication::activePopupWidget());
    LoadingView view(kBusy, m_parent.get());
    view.showLoading();
    QVERIFY(!QApplication::activePopupWidget());
    QCOMPARE(box.currentIndex(), 0);
}

SCN_TEST(TestLoadingViewInput, QApplication)
#include "test_loadingviewinput.moc"
