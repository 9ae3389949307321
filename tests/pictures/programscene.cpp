#include "programscene.h"

#include "app/mainwidget.h"
#include "app/startup.h"
#include "channels/advancedsetting.h"
#include "common/channelnumber.h"
#include "overlay/loadingview.h"
#include "overlay/lockabledatacollectionview.h"
#include "plot/custommdisubwindow.h"
#include "plot/graphicsettingwidget.h"
#include "screen.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"
#include "widgets/custommessagedialog.h"
#include "widgets/customsidebutton.h"
#include "widgets/imagebutton.h"
#include "widgets/sidebar.h"

#include <QApplication>
#include <QFile>
#include <QMdiArea>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScrollArea>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>
#include <QtTest>

#include <algorithm>

using namespace scn;

namespace {

constexpr int kWaitMs = 60000;
constexpr int kWorkspacePage = 1;

bool slides(const SideBar* bar)
{
    const auto animations = bar->findChildren<QPropertyAnimation*>();
    return std::any_of(animations.cbegin(), animations.cend(), [](const QPropertyAnimation* slide) {
        return slide->state() == QAbstractAnimation::Running;
    });
}

} // namespace

ProgramScene::ProgramScene(const QStringList& options)
    : m_instrument(std::make_unique<SimulatedInstrument>(
          SimulatedInstrument::Transport::Tcp,
          QStringList{QStringLiteral("--slots"), QStringLiteral("1:1,2:0"),
                      QStringLiteral("--rate"), QStringLiteral("40")} +
              options))
{
    g_resourceName = m_instrument->resource();
    m_window = std::make_unique<MainWidget>(nullptr);
    wearTheProgramsStyle();
}

void ProgramScene::wearTheProgramsStyle()
{
    QFile sheet(QStringLiteral(":/qss/styles.qss"));
    scn::startup::applyStyleSheet(sheet);
}

ProgramScene::~ProgramScene() = default;

void ProgramScene::show()
{
    m_window->setGeometry(QRect(QPoint(0, 0), screen::size()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    screen::giveKeysTo(m_window.get());
    screen::movePointerAway();
}

void ProgramScene::showReady()
{
    show();
    const auto views = m_window->findChildren<LoadingView*>();
    QVERIFY(!views.isEmpty());
    for (const LoadingView* view : views) {
        QTRY_VERIFY_WITH_TIMEOUT(view->isHidden(), kWaitMs);
    }
}

void ProgramScene::chooseForm(int page) const
{
    checkTab(m_window->findChild<QTabWidget*>(QStringLiteral("myTabWidget")), page);
}

void ProgramScene::choosePage(int page) const
{
    checkTab(m_window->findChild<QTabWidget*>(QStringLiteral("myTabWidget1")), page);
}

void ProgramScene::checkTab(QTabWidget* tabs, int page) const
{
    screen::click(tabs->tabBar(), tabs->tabBar()->tabRect(page).center());
    QTRY_COMPARE(tabs->currentIndex(), page);
    screen::movePointerAway();
}

QScrollArea* ProgramScene::form() const
{
    const auto* tabs = m_window->findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    return qobject_cast<QScrollArea*>(tabs->currentWidget());
}

QTreeWidget* ProgramScene::tree() const
{
    return m_window->findChild<QTreeWidget*>();
}

QWidget* ProgramScene::cellWidget(int channel, ChannelColumn column) const
{
    const auto number = ChannelNumber::fromLabel(channel);
    QTreeWidgetItem* const item = tree()->topLevelItem(number.slot() - 1)->child(number.row());
    QWidget* const widget = tree()->itemWidget(item, column);
    screen::scrollTo(tree()->viewport(), widget);
    return widget;
}

void ProgramScene::tick(int channel) const
{
    const auto number = ChannelNumber::fromLabel(channel);
    QTreeWidgetItem* const item = tree()->topLevelItem(number.slot() - 1)->child(number.row());
    const bool wasTicked = item->checkState(ScanColumn) == Qt::Checked;
    const QRect row = tree()->visualItemRect(item);
    const int indicator = tree()->style()->pixelMetric(QStyle::PM_IndicatorWidth);
    screen::click(tree()->viewport(), QPoint(row.left() + 3 + indicator / 2, row.center().y()));
    QTRY_VERIFY((item->checkState(ScanColumn) == Qt::Checked) != wasTicked);
}

void ProgramScene::choose(CustomComboBox* box, const QString& entry)
{
    const int steps = box->findText(entry) - box->currentIndex();
    QVERIFY2(box->findText(entry) >= 0, qPrintable(entry));
    screen::click(box);
    QTRY_VERIFY(box->view()->isVisible());
    QStringList keys;
    for (int step = 0; step < qAbs(steps); ++step) {
        keys.append(steps > 0 ? QStringLiteral("Down") : QStringLiteral("Up"));
    }
    screen::press(keys + QStringList{QStringLiteral("Return")});
    QTRY_COMPARE(box->currentText(), entry);
    screen::movePointerAway();
}

AdvancedSetting* ProgramScene::openPanel(int channel, ChannelColumn column) const
{
    screen::click(cell<QPushButton>(channel, column));
    const auto opened = [] {
        return qobject_cast<AdvancedSetting*>(QApplication::activePopupWidget());
    };
    if (!QTest::qWaitFor([&opened] { return opened() != nullptr; }, kWaitMs)) {
        return nullptr;
    }
    screen::movePointerAway();
    return opened();
}

ImageButton* ProgramScene::startButton() const
{
    return m_window->findChildren<ImageButton*>(QStringLiteral("imageButton")).value(0);
}

ImageButton* ProgramScene::exportButton() const
{
    return m_window->findChildren<ImageButton*>(QStringLiteral("imageButton")).value(1);
}

void ProgramScene::run(int channels) const
{
    for (int channel = 101; channel < 101 + channels; ++channel) {
        tick(channel);
    }
    screen::click(startButton());
    screen::movePointerAway();
    QTRY_VERIFY_WITH_TIMEOUT(m_instrument->received().filter(QStringLiteral("R? ")).size() >= 3,
                             kWaitMs);
}

void ProgramScene::stop() const
{
    screen::click(startButton());
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, kWaitMs);
    screen::movePointerAway();
}

SideBar* ProgramScene::sideBar() const
{
    return m_window->findChild<SideBar*>();
}

QMdiArea* ProgramScene::area() const
{
    return m_window->findChild<QMdiArea*>();
}

void ProgramScene::openWorkspace() const
{
    choosePage(kWorkspacePage);
    for (const auto* strip : sideBar()->findChildren<CustomSideButton*>()) {
        if (strip->isVisible() && !sideBar()->content()->isVisible()) {
            screen::click(strip);
        }
    }
    QTRY_VERIFY(sideBar()->content()->isVisible() && !slides(sideBar()));
    screen::movePointerAway();
}

CustomMdiSubWindow* ProgramScene::openView(int button) const
{
    const int before = area()->subWindowList().size();
    screen::click(sideBar()->content()->findChildren<QPushButton*>().at(button));
    if (!QTest::qWaitFor([&] { return area()->subWindowList().size() > before; }, kWaitMs)) {
        qFatal("no view was opened");
    }
    screen::movePointerAway();
    return qobject_cast<CustomMdiSubWindow*>(area()->subWindowList().constLast());
}

CustomMessageDialog* ProgramScene::message() const
{
    return m_window->findChild<CustomMessageDialog*>();
}

LockableDataCollectionView* ProgramScene::lock() const
{
    return m_window->findChild<LockableDataCollectionView*>();
}

LoadingView* ProgramScene::recovery() const
{
    const auto views = m_window->findChildren<LoadingView*>(QString(), Qt::FindDirectChildrenOnly);
    for (LoadingView* view : views) {
        if (view->findChild<QPushButton*>()) {
            return view;
        }
    }
    return nullptr;
}
