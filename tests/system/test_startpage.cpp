#include "support/launcherprocess.h"
#include "support/launcherscene.h"
#include "support/testprogram.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTreeWidget>

using namespace scnlauncher;

namespace {

constexpr int kWaitMs = 60000;
const QString kFakeChild = QStringLiteral(SCN_FAKE_CHILD);

/// A serial line that no other test opens; the fake child answers there.
QString line(int number)
{
    return QStringLiteral("ASRL/dev/tty%1-%2::INSTR")
        .arg(QCoreApplication::applicationPid())
        .arg(number);
}

void press(const QString& key)
{
    DisplayApplication::display().xdotool({QStringLiteral("key"), key});
}

QTreeWidget* listOf(const LauncherScene& scene)
{
    return scene.currentTab()->findChild<QTreeWidget*>();
}

QComboBox* rateOf(const LauncherScene& scene)
{
    return scene.currentTab()->findChild<QComboBox*>(QStringLiteral("rate"));
}

/// The resources used last, as the page lists them.
QStringList recentOn(const LauncherScene& scene)
{
    QStringList texts;
    const QTreeWidgetItem* section = listOf(scene)->topLevelItem(1);
    if (section->text(0) == QStringLiteral("最近使用")) {
        for (int row = 0; row < section->childCount(); ++row) {
            texts.append(section->child(row)->text(0));
        }
    }
    return texts;
}

QPoint placeOfRecent(const LauncherScene& scene, int row)
{
    const QTreeWidget* list = listOf(scene);
    const QRect place = list->visualItemRect(list->topLevelItem(1)->child(row));
    return list->viewport()->mapToGlobal(place.center());
}

void clickRecent(const LauncherScene& scene, int row)
{
    const QPoint point = placeOfRecent(scene, row);
    DisplayApplication::display().click(point.x(), point.y());
    QTRY_VERIFY(listOf(scene)->topLevelItem(1)->child(row)->isSelected());
}

void leave(const LauncherScene& scene)
{
    scene.clickButton("chooseOther");
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    QTRY_VERIFY(listOf(scene)->isVisible());
}

} // namespace

/// The page that lists what can be opened, with a hand on it.
class TestStartPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void eachLineHasItsRate();
    void rateOfTheCommandLineIsKept();
    void choiceOutlivesARefresh();
    void failedResourceNeedsNoSecondTyping();
    void fieldsMenuIsChinese();
    void recentEntryIsRemoved_data();
    void recentEntryIsRemoved();
};

void TestStartPage::initTestCase()
{
    QVERIFY2(!DisplayApplication::display().name().isEmpty(), "Xvfb did not start");
}

void TestStartPage::eachLineHasItsRate()
{
    LauncherScene scene(kFakeChild);
    const QComboBox* const rate = rateOf(scene);
    // Typed once, for the rate is chosen beside what is typed.
    scene.openByHand(line(1));
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("serialRate"), QStringLiteral("57600 波特"), kWaitMs);
    leave(scene);
    clickRecent(scene, 0);
    scene.click(rate);
    press(QStringLiteral("Home"));
    press(QStringLiteral("Return"));
    QTRY_COMPARE(rate->currentText(), QStringLiteral("9600 波特"));
    scene.clickButton("open");
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("serialRate"), QStringLiteral("9600 波特"), kWaitMs);
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("identity"), QStringLiteral("SCN SCN4070A at 9600"),
                              kWaitMs);
    leave(scene);

    scene.openByHand(QStringLiteral("good"));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
    QCOMPARE(scene.label("serialRate"), QString());
    scene.clickButton("cancel");
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    QCOMPARE(recentOn(scene), (QStringList{QStringLiteral("good"), line(1)}));
    clickRecent(scene, 1);
    QTRY_COMPARE(rate->currentText(), QStringLiteral("9600 波特"));
}

void TestStartPage::rateOfTheCommandLineIsKept()
{
    LauncherProcess launcher(DisplayApplication::display().name());
    const QStringList arguments{QStringLiteral("--program"), kFakeChild, line(2)};
    const auto lastRate = [&launcher] {
        return launcher.log()
            .section(QStringLiteral("SCN4070A at "), -1)
            .section(QLatin1Char('\n'), 0, 0);
    };
    const auto startAndEnd = [&](const QString& rate) {
        const int starts = launcher.log().count(QStringLiteral("SCN4070A at "));
        launcher.start(arguments);
        QTRY_VERIFY_WITH_TIMEOUT(launcher.log().count(QStringLiteral("SCN4070A at ")) > starts,
                                 kWaitMs);
        QCOMPARE(lastRate(), rate);
        launcher.terminate();
        QVERIFY(launcher.waitForEnd());
    };
    startAndEnd(QStringLiteral("57600"));
    launcher.setVariable(QStringLiteral("SCN4070A_SERIAL_RATE"), QStringLiteral("230400"));
    startAndEnd(QStringLiteral("230400"));
    // No rate of a line: the last one is taken.
    launcher.setVariable(QStringLiteral("SCN4070A_SERIAL_RATE"), QStringLiteral("57601"));
    startAndEnd(QStringLiteral("230400"));
}

void TestStartPage::choiceOutlivesARefresh()
{
    LauncherScene scene(kFakeChild);
    const auto* field = scene.currentTab()->findChild<QLineEdit*>(QStringLiteral("resource"));
    const auto* list = listOf(scene);
    // Chosen: the port that the scene lists.
    const QRect row = list->visualItemRect(list->topLevelItem(1)->child(0));
    const QPoint point = list->viewport()->mapToGlobal(row.center());
    DisplayApplication::display().click(point.x(), point.y());
    QTRY_COMPARE(field->text(), QStringLiteral("ASRL/dev/null::INSTR"));
    scene.clickButton("refresh");
    QTRY_VERIFY(list->currentItem() && list->currentItem() == list->topLevelItem(1)->child(0));
    QCOMPARE(field->text(), QStringLiteral("ASRL/dev/null::INSTR"));
    // Typed.
    scene.click(field);
    press(QStringLiteral("End"));
    press(QStringLiteral("5"));
    const QString typed = QStringLiteral("ASRL/dev/null::INSTR5");
    QTRY_COMPARE(field->text(), typed);
    const QTreeWidgetItem* const before = list->topLevelItem(0);
    scene.clickButton("refresh");
    QTRY_VERIFY(list->topLevelItem(0) != before);
    QCOMPARE(field->text(), typed);
    QVERIFY(!list->currentItem());
}

void TestStartPage::failedResourceNeedsNoSecondTyping()
{
    LauncherScene scene(kFakeChild);
    const QString resource = LauncherScene::own("crash");
    scene.openByHand(resource);
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("pageTitle").contains(QStringLiteral("意外终止")),
                             kWaitMs);
    leave(scene);
    const auto* field = scene.currentTab()->findChild<QLineEdit*>(QStringLiteral("resource"));
    QCOMPARE(field->text(), resource);
    scene.clickButton("open");
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("pageTitle").contains(QStringLiteral("意外终止")),
                             kWaitMs);
}

void TestStartPage::fieldsMenuIsChinese()
{
    LauncherScene scene(kFakeChild);
    scene.click(scene.currentTab()->findChild<QLineEdit*>(QStringLiteral("resource")));
    DisplayApplication::display().xdotool({QStringLiteral("click"), QStringLiteral("3")});
    QTRY_VERIFY(QApplication::activePopupWidget());
    QStringList texts;
    for (const QAction* action : QApplication::activePopupWidget()->actions()) {
        texts.append(action->text());
    }
    QVERIFY2(texts.join(QLatin1Char(' ')).contains(QStringLiteral("粘贴")),
             qPrintable(texts.join(QLatin1Char(' '))));
    press(QStringLiteral("Escape"));
    QTRY_VERIFY(!QApplication::activePopupWidget());
}

void TestStartPage::recentEntryIsRemoved_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("key") << false;
    QTest::newRow("menu") << true;
}

void TestStartPage::recentEntryIsRemoved()
{
    QFETCH(bool, byMenu);
    LauncherScene scene(kFakeChild);
    for (const char* resource : {"good=stays", "good=goes"}) {
        scene.openByHand(LauncherScene::own(resource));
        QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
        leave(scene);
    }
    const QString stays = LauncherScene::own("good=stays");
    QCOMPARE(recentOn(scene), (QStringList{LauncherScene::own("good=goes"), stays}));
    const auto remove = [&] {
        clickRecent(scene, 0);
        if (byMenu) {
            DisplayApplication::display().xdotool({QStringLiteral("click"), QStringLiteral("3")});
            QTRY_VERIFY(QApplication::activePopupWidget());
            press(QStringLiteral("Down"));
            press(QStringLiteral("Return"));
        } else {
            press(QStringLiteral("Delete"));
        }
    };
    remove();
    QTRY_COMPARE(recentOn(scene), QStringList{stays});
    // It stays away, also from another page, and the other one can go too.
    scene.clickButton("refresh");
    QTRY_COMPARE(recentOn(scene), QStringList{stays});
    remove();
    QTRY_COMPARE(recentOn(scene), QStringList());
    // What was not opened stays, whatever is pressed.
    const int sections = listOf(scene)->topLevelItemCount();
    press(QStringLiteral("Delete"));
    scene.clickButton("refresh");
    QCOMPARE(listOf(scene)->topLevelItemCount(), sections);
}

SCN_TEST(TestStartPage, DisplayApplication)
#include "test_startpage.moc"
