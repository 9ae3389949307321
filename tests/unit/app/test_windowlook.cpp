#include "app/mainwidget.h"
#include "app/startup.h"
#include "channels/advancedsetting.h"
#include "overlay/loadingview.h"
#include "plot/custommdisubwindow.h"
#include "plot/customtitlebar.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "support/hand.h"
#include "support/looks.h"
#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "windowbench.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFont>
#include <QGroupBox>
#include <QHeaderView>
#include <QImage>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleOptionComboBox>
#include <QStyleOptionViewItem>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QToolTip>
#include <QtTest>

#include <algorithm>

namespace {

/// The popup as a display shows it: white where it paints nothing.
QImage asOnADisplay(QWidget& popup)
{
    QImage image(popup.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    popup.render(&image);
    return image;
}

/// Light text on a dark ground.
void checkLightOnDark(const QImage& image)
{
    int lightest = 0;
    int dark = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int lightness = image.pixelColor(x, y).lightness();
            lightest = std::max(lightest, lightness);
            dark += lightness < 100 ? 1 : 0;
        }
    }
    QVERIFY2(dark > image.width() * image.height() / 2, "the ground is not dark");
    QVERIFY2(lightest > 180, "the text is not light");
}

/// Shows the window with the workspace in front; null if it does not appear.
GraphicSettingWidget* showWorkspace(WindowBench& bench)
{
    MainWidget& window = bench.open();
    window.resize(1280, 720);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) {
        return nullptr;
    }
    bench.startupView()->stopLoading();
    window.findChild<QTabWidget*>(QStringLiteral("myTabWidget1"))->setCurrentIndex(1);
    return window.findChild<GraphicSettingWidget*>();
}

} // namespace

/// The window with the program's fonts and style sheet, at its initial size.
class TestWindowLook : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formsFitWithoutScrollingSideways();
    void partsNeitherOverlapNorAreClipped_data();
    void partsNeitherOverlapNorAreClipped();
    void viewsOfAnySizeAreWhole();
    void controlsBelowAPlotAreLow();
    void newGridHasRoomForItsTexts();
    void listsOpenBesideTheirBoxes();
    void popupsOfTheWorkspaceAreLegible_data();
    void popupsOfTheWorkspaceAreLegible();
    void tipsOfTheWorkspaceAreLegible();
    void panelsStayOnTheScreen();
    void panelsStandOutFromTheTable();
    void setupButtonHasAFace();
    void headersOfTheViewsLookAlike();
};

void TestWindowLook::initTestCase()
{
    initResources();
    // The default font of an X display; this platform has a larger one.
    QFont font(QStringLiteral("Sans Serif"));
    font.setPixelSize(12);
    QApplication::setFont(font);
    scn::startup::substituteFonts();
    QFile styleFile(QStringLiteral(":/qss/styles.qss"));
    scn::startup::applyStyleSheet(styleFile);
}

void TestWindowLook::formsFitWithoutScrollingSideways()
{
    WindowBench bench;
    MainWidget& window = bench.open();
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.size(), QSize(600, 400));
    auto* forms = window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    for (int page = 0; page < forms->count(); ++page) {
        forms->setCurrentIndex(page);
        QCoreApplication::processEvents();
        const auto* area = qobject_cast<QScrollArea*>(forms->widget(page));
        QVERIFY2(area->horizontalScrollBar()->maximum() == 0,
                 qPrintable(QStringLiteral("%1 wide in %2")
                                .arg(QString::number(area->widget()->width()),
                                     QString::number(area->viewport()->width()))));
    }
}

void TestWindowLook::partsNeitherOverlapNorAreClipped_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<int>("page");
    QTest::addColumn<QSize>("size");
    for (const QSize& size : {QSize(1280, 720), QSize(1920, 1080)}) {
        for (int form = 0; form < 2; ++form) {
            for (int page = 0; page < 2; ++page) {
                QTest::addRow("%d wide, form %d, page %d", size.width(), form, page)
                    << form << page << size;
            }
        }
    }
}

void TestWindowLook::partsNeitherOverlapNorAreClipped()
{
    QFETCH(int, form);
    QFETCH(int, page);
    QFETCH(QSize, size);
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4005A"));
    MainWidget& window = bench.open();
    window.resize(size);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    bench.startupView()->stopLoading();
    window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"))->setCurrentIndex(form);
    window.findChild<QTabWidget*>(QStringLiteral("myTabWidget1"))->setCurrentIndex(page);
    QCoreApplication::processEvents();
    QCOMPARE(looks::layoutProblems(), QStringList());
}

/// A chart and a grid as they open, maximised, and with every height between.
void TestWindowLook::viewsOfAnySizeAreWhole()
{
    WindowBench bench;
    auto* workspace = showWorkspace(bench);
    QVERIFY(workspace);
    for (const char* opener : {"recvGraphicBtnSlots", "recvDataNetworkBtnSlots"}) {
        QVERIFY(QMetaObject::invokeMethod(workspace, opener));
        auto* view = workspace->findChild<CustomMdiSubWindow*>();
        QCOMPARE(view->size(), QSize(480, 220));
        QTRY_COMPARE(looks::layoutProblems(), QStringList());
        for (int height = 220; height < 640; height += 7) {
            view->resize(700, height);
            // A changed least size reaches the layouts one after the other.
            QTRY_COMPARE(looks::layoutProblems(), QStringList());
        }
        view->showMaximized();
        QTRY_COMPARE(looks::layoutProblems(), QStringList());
        delete view;
    }
}

void TestWindowLook::controlsBelowAPlotAreLow()
{
    WindowBench bench;
    auto* workspace = showWorkspace(bench);
    QVERIFY(workspace);
    QVERIFY(QMetaObject::invokeMethod(workspace, "recvGraphicBtnSlots"));
    const auto* view = workspace->findChild<CustomMdiSubWindow*>();
    QCoreApplication::processEvents();
    QCOMPARE(view->findChild<CustomComboBox*>()->height(), 20);
    for (const QPushButton* button : view->contentWidget()->findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("实时显示")) {
            QCOMPARE(button->height(), 20);
            return;
        }
    }
    QFAIL("no button");
}

/// The date above the time, and a channel with its unit in its box, none of them cut.
void TestWindowLook::newGridHasRoomForItsTexts()
{
    WindowBench bench;
    auto* workspace = showWorkspace(bench);
    QVERIFY(workspace);
    QVERIFY(QMetaObject::invokeMethod(workspace, "recvDataNetworkBtnSlots"));
    auto* view = workspace->findChild<CustomMdiSubWindow*>();
    QCOMPARE(view->size(), QSize(480, 220));
    QCoreApplication::processEvents();
    auto* table = view->findChild<QTableWidget*>();

    QStyleOptionViewItem option;
    option.initFrom(table);
    option.rect = table->visualItemRect(table->item(0, 3));
    option.features = QStyleOptionViewItem::HasDisplay;
    option.text = QStringLiteral("2026-12-28 20:08:58");
    const QRect cell = table->style()->subElementRect(QStyle::SE_ItemViewItemText, &option, table);
    const int margin = table->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
    const QRect text = QFontMetrics(table->font())
                           .boundingRect(QRect(0, 0, cell.width() - 2 * margin, 1000),
                                         Qt::TextWordWrap, option.text);
    QVERIFY(text.width() <= cell.width() - 2 * margin);
    QVERIFY(text.height() <= option.rect.height());

    auto* box = qobject_cast<QComboBox*>(table->cellWidget(0, 1));
    QStyleOptionComboBox boxOption;
    boxOption.initFrom(box);
    const QRect field = box->style()->subControlRect(QStyle::CC_ComboBox, &boxOption,
                                                     QStyle::SC_ComboBoxEditField, box);
    QVERIFY(box->fontMetrics().horizontalAdvance(QStringLiteral("101(Vdc)")) <= field.width());
}

void TestWindowLook::listsOpenBesideTheirBoxes()
{
    WindowBench bench;
    MainWidget& window = bench.open();
    window.resize(1280, 720);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bench.startupView()->stopLoading();
    window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"))->setCurrentIndex(1);
    QTest::mouseClick(bench.button(QStringLiteral("警报时:")), Qt::LeftButton);
    auto* alarm = window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"))
                      ->currentWidget()
                      ->findChild<QComboBox*>();
    QTRY_VERIFY(alarm->isEnabled());
    QTest::mouseClick(alarm, Qt::LeftButton);
    const QWidget* list = QApplication::activePopupWidget();
    QVERIFY(list);
    const QRect box(alarm->mapToGlobal(QPoint()), alarm->size());
    constexpr int kFrame = 2; // may lie on the box's
    QVERIFY(!list->geometry().intersects(box.adjusted(kFrame, kFrame, -kFrame, -kFrame)));
    QCOMPARE(looks::layoutProblems(), QStringList());
}

void TestWindowLook::popupsOfTheWorkspaceAreLegible_data()
{
    QTest::addColumn<QByteArray>("opener");
    QTest::addColumn<QString>("control");
    const QByteArray chart = "recvGraphicBtnSlots";
    QTest::newRow("zoom of a chart") << chart << QStringLiteral("zoom");
    QTest::newRow("channel of a chart") << chart << QStringLiteral("channel");
    QTest::newRow("channel of a grid")
        << QByteArray("recvDataNetworkBtnSlots") << QStringLiteral("channel");
    QTest::newRow("menu of a chart") << chart << QStringLiteral("offset");
}

void TestWindowLook::popupsOfTheWorkspaceAreLegible()
{
    QFETCH(QByteArray, opener);
    QFETCH(QString, control);
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4005A"));
    MainWidget& window = bench.open();
    window.resize(1200, 800);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bench.startupView()->stopLoading();
    for (const int channel : {101, 102}) {
        bench.tick(channel);
    }
    window.findChild<QTabWidget*>(QStringLiteral("myTabWidget1"))->setCurrentIndex(1);
    auto* workspace = window.findChild<GraphicSettingWidget*>();
    QVERIFY(QMetaObject::invokeMethod(workspace, opener.constData()));
    auto* view = workspace->findChild<CustomMdiSubWindow*>();
    view->showMaximized();
    QCoreApplication::processEvents();

    // The menu of a spin box runs an event loop of its own.
    QImage image;
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&look, &image] {
        if (QWidget* popup = QApplication::activePopupWidget()) {
            look.stop();
            image = asOnADisplay(*popup);
            popup->close();
        }
    });
    look.start(50);
    auto* table = view->findChild<QTableWidget*>();
    if (control == QStringLiteral("zoom")) {
        QTest::mouseClick(view->findChild<CustomComboBox*>(), Qt::LeftButton);
    } else if (control == QStringLiteral("channel")) {
        for (QComboBox* box : table->findChildren<QComboBox*>()) {
            if (box->count() == 3) {
                QTest::mouseClick(box, Qt::LeftButton);
                break;
            }
        }
    } else {
        auto* spinBox = table->findChild<QDoubleSpinBox*>();
        spinBox->setEnabled(true);
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                                spinBox->mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(spinBox, &event);
    }
    QTRY_VERIFY(!image.isNull());
    checkLightOnDark(image);
}

void TestWindowLook::tipsOfTheWorkspaceAreLegible()
{
    WindowBench bench;
    auto* workspace = showWorkspace(bench);
    QVERIFY(workspace);
    workspace->window()->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(workspace->window()));
    QVERIFY(QMetaObject::invokeMethod(workspace, "recvGraphicBtnSlots"));
    const auto* bar = workspace->findChild<CustomTitleBar*>();
    hand::movePointer(bar, QPoint(5, 5));
    hand::movePointer(bar->findChild<QPushButton*>(), QPoint(5, 5));
    QTRY_VERIFY(QToolTip::isVisible());
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto tip = std::find_if(windows.cbegin(), windows.cend(), [](const QWidget* window) {
        return window->inherits("QTipLabel") && window->isVisible();
    });
    QVERIFY(tip != windows.cend());
    checkLightOnDark(asOnADisplay(**tip));
    QToolTip::hideText();
}

void TestWindowLook::panelsStayOnTheScreen()
{
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4005A"));
    MainWidget& window = bench.open();
    const QRect screen = window.screen()->availableGeometry();
    window.resize(1100, screen.height());
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bench.startupView()->stopLoading();
    for (const int channel : {101, 102}) {
        auto* button = bench.cell<QPushButton>(channel, scn::MoreColumn);
        // At the lower right corner.
        window.move(screen.bottomRight() - QPoint(20, 20) - button->mapTo(&window, QPoint(0, 0)));
        QTest::mouseClick(button, Qt::LeftButton);
        auto* panel = qobject_cast<AdvancedSetting*>(QApplication::activePopupWidget());
        QVERIFY(panel);
        QVERIFY(screen.contains(panel->frameGeometry()));
        panel->close();
        // Where there is room, beside the button.
        window.move(screen.topLeft() + QPoint(20, 20) - button->mapTo(&window, QPoint(0, 0)));
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(panel->pos(), button->mapToGlobal(QPoint(button->width(), 0)));
        panel->close();
    }
}

/// An outline all around, no box around a check mark's text, and nothing at the edge.
void TestWindowLook::panelsStandOutFromTheTable()
{
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4005A"));
    MainWidget& window = bench.open();
    window.resize(780, 580);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bench.startupView()->stopLoading();
    AdvancedSetting* panel = bench.openPanel(101, scn::MoreColumn);
    QVERIFY(panel);
    panel->showFunctionOptions(QStringLiteral("K"), 9, 101); // a thermocouple
    QCoreApplication::processEvents();
    const QImage picture = panel->grab().toImage();
    const QColor outline(0x45, 0x53, 0x64);
    for (int y = picture.height() / 3; y < picture.height(); ++y) {
        QCOMPARE(picture.pixelColor(0, y), outline);
        QCOMPARE(picture.pixelColor(picture.width() - 1, y), outline);
    }
    for (const QWidget* part : panel->findChildren<QGroupBox*>()) {
        QVERIFY(part->isHidden() || part->x() >= 4);
    }
    for (auto* check : panel->findChildren<QCheckBox*>()) {
        if (check->isVisible()) {
            const QPoint corner = check->mapTo(panel, QPoint(check->width() / 2, 0));
            for (int y = 0; y < 4; ++y) {
                QCOMPARE(picture.pixelColor(corner + QPoint(0, y)), QColor(0x17, 0x17, 0x17));
            }
        }
    }
    QCOMPARE(looks::layoutProblems(), QStringList());
    panel->close();
}

void TestWindowLook::setupButtonHasAFace()
{
    WindowBench bench;
    MainWidget& window = bench.open();
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    bench.startupView()->stopLoading();
    auto* button = window.findChild<QPushButton*>(QStringLiteral("setupButton"));
    QVERIFY(button);
    const QImage picture = button->grab().toImage();
    // The page is rgb(63, 63, 63).
    QCOMPARE(picture.pixelColor(picture.width() / 2, 2), QColor(0x23, 0x23, 0x23));
}

void TestWindowLook::headersOfTheViewsLookAlike()
{
    WindowBench bench;
    auto* workspace = showWorkspace(bench);
    QVERIFY(workspace);
    for (const char* opener : {"recvGraphicBtnSlots", "recvDataNetworkBtnSlots"}) {
        QVERIFY(QMetaObject::invokeMethod(workspace, opener));
        auto* view = workspace->findChild<CustomMdiSubWindow*>();
        view->showMaximized();
        QCoreApplication::processEvents();
        auto* header = view->findChild<QTableWidget*>()->horizontalHeader();
        QCOMPARE(header->grab().toImage().pixelColor(3, 3), QColor(0x5D, 0x5D, 0x5D));
        QVERIFY(!header->highlightSections());
        delete view;
    }
}

SCN_TEST(TestWindowLook, QApplication)
#include "test_windowlook.moc"
