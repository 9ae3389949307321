#include "launcher/startingpage.h"
#include "support/testprogram.h"

#include <QLabel>
#include <QTest>

using namespace scnlauncher;
using namespace std::chrono_literals;

namespace {

bool says(const StartingPage& page, const QString& text)
{
    for (const QLabel* label : page.findChildren<QLabel*>()) {
        if (label->text().contains(text)) {
            return true;
        }
    }
    return false;
}

const QString kAdvice = QStringLiteral("程序还没有显示窗口");

} // namespace

/// What is shown while a child starts.
class TestStartingPage : public QObject
{
    Q_OBJECT

private slots:
    void longStartAdvises();
    void shortStartDoesNot();
    void endDoesNot();
};

void TestStartingPage::longStartAdvises()
{
    StartingPage page(nullptr, 1500ms);
    page.showStarting(QStringLiteral("a"));
    QVERIFY(says(page, QStringLiteral("已用 0 秒")));
    QVERIFY(!says(page, kAdvice));
    QTRY_VERIFY(says(page, kAdvice));
    // The next start has its own time.
    page.showStarting(QStringLiteral("b"));
    QVERIFY(!says(page, kAdvice));
}

void TestStartingPage::shortStartDoesNot()
{
    StartingPage page(nullptr);
    page.showStarting(QStringLiteral("a"));
    QTRY_VERIFY(says(page, QStringLiteral("已用 2 秒")));
    QVERIFY(!says(page, kAdvice));
}

void TestStartingPage::endDoesNot()
{
    StartingPage page(nullptr, 500ms);
    page.showEnding();
    QTRY_VERIFY(says(page, QStringLiteral("已用 2 秒")));
    QVERIFY(!says(page, kAdvice));
}

SCN_TEST(TestStartingPage, QApplication)
#include "test_startingpage.moc"
