#include "support/testprogram.h"
#include "widgets/customlineedit.h"

#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

class TestCustomLineEdit : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void tabbingOutWithoutTypingEmitsNothing();
    void textSetByTheProgramEmitsNothing();
    void leavingAfterTypingEmitsTheNewText();
    void restoredTextEmitsNothingOnFocusOut();
    void returnThenFocusOutEmitsOnce();
    void returnWithoutTypingEmitsNothing();
    void typingOnAfterReturnIsANewChange();
    void textSetByTheProgramAfterFocusInIsNoChangeOfTheUser();
    void flagIsClearedByEveryFocusOut();
    void flagIsClearedByFocusIn();
    void returnOnARestoredTextKeepsTheFlag();
    void slotThatTakesTheFocusAwayHearsOneChange();

private:
    std::unique_ptr<QWidget> m_window;
    CustomLineEdit* m_edit = nullptr;
    QLineEdit* m_other = nullptr;
};

void TestCustomLineEdit::init()
{
    m_window = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(m_window.get());
    m_edit = new CustomLineEdit(QStringLiteral("old"));
    m_other = new QLineEdit;
    layout->addWidget(m_edit);
    layout->addWidget(m_other);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_other->setFocus();
    QTRY_VERIFY(m_other->hasFocus());
}

void TestCustomLineEdit::cleanup()
{
    m_window.reset();
}

void TestCustomLineEdit::tabbingOutWithoutTypingEmitsNothing()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClick(m_edit, Qt::Key_Tab);
    QVERIFY(m_other->hasFocus());
    QCOMPARE(changed.count(), 0);
}

void TestCustomLineEdit::textSetByTheProgramEmitsNothing()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setText(QStringLiteral("set before"));
    m_edit->setFocus();
    m_edit->setText(QStringLiteral("set inside"));
    QTest::keyClick(m_edit, Qt::Key_Tab);
    QCOMPARE(changed.count(), 0);
}

void TestCustomLineEdit::leavingAfterTypingEmitsTheNewText()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("er"));
    QCOMPARE(changed.count(), 0);
    m_other->setFocus();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toString(), QStringLiteral("older"));
}

void TestCustomLineEdit::restoredTextEmitsNothingOnFocusOut()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("x"));
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    QCOMPARE(m_edit->text(), QStringLiteral("old"));
    m_other->setFocus();
    QCOMPARE(changed.count(), 0);
}

void TestCustomLineEdit::returnThenFocusOutEmitsOnce()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("er"));
    QTest::keyClick(m_edit, Qt::Key_Return);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toString(), QStringLiteral("older"));
    m_other->setFocus();
    QCOMPARE(changed.count(), 1);
}

void TestCustomLineEdit::returnWithoutTypingEmitsNothing()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    m_edit->setText(QStringLiteral("set inside"));
    QTest::keyClick(m_edit, Qt::Key_Return);
    QCOMPARE(changed.count(), 0);
}

void TestCustomLineEdit::typingOnAfterReturnIsANewChange()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("er"));
    QTest::keyClick(m_edit, Qt::Key_Return);
    // Back to the text of focus-in, which is not the one that Return reported.
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    m_other->setFocus();
    QCOMPARE(changed.count(), 2);
    QCOMPARE(changed.at(1).at(0).toString(), QStringLiteral("old"));
}

void TestCustomLineEdit::textSetByTheProgramAfterFocusInIsNoChangeOfTheUser()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("x"));
    m_edit->setText(QStringLiteral("old"));
    QTest::keyClick(m_edit, Qt::Key_Return);
    QCOMPARE(changed.count(), 0);
}

void TestCustomLineEdit::flagIsClearedByEveryFocusOut()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("x"));
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    m_other->setFocus();
    // Return without the focus in between: only the flag can hold it back.
    m_edit->setText(QStringLiteral("other"));
    m_edit->onReturnPressed();
    QCOMPARE(changed.count(), 0);
}

void TestCustomLineEdit::flagIsClearedByFocusIn()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->onTextEdited(QString());
    m_edit->setFocus();
    m_edit->setText(QStringLiteral("set inside"));
    m_other->setFocus();
    QCOMPARE(changed.count(), 0);
}

void TestCustomLineEdit::returnOnARestoredTextKeepsTheFlag()
{
    QSignalSpy changed(m_edit, &CustomLineEdit::textChangedAndFocusOut);
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("x"));
    QTest::keyClick(m_edit, Qt::Key_Backspace);
    QTest::keyClick(m_edit, Qt::Key_Return);
    QCOMPARE(changed.count(), 0);
    m_edit->setText(QStringLiteral("completed"));
    m_other->setFocus();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toString(), QStringLiteral("completed"));
}

void TestCustomLineEdit::slotThatTakesTheFocusAwayHearsOneChange()
{
    int heard = 0;
    connect(m_edit, &CustomLineEdit::textChangedAndFocusOut, m_other, [this, &heard] {
        ++heard;
        m_other->setFocus();
    });
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("x"));
    QTest::keyClick(m_edit, Qt::Key_Return);
    QVERIFY(m_other->hasFocus());
    QCOMPARE(heard, 1);
}

SCN_TEST(TestCustomLineEdit, QApplication)
#include "test_customlineedit.moc"
