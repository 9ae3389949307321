#include "launcher/launcherwindow.h"

#include "launcher/launchersettings.h"
#include "launcher/scanquestion.h"
#include "launcher/stateline.h"

#include <QCloseEvent>
#include <QScreen>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace scnlauncher {
namespace {

/// The part for the program's window, with the bars above and below.
constexpr int kTabHeight = 30;
constexpr QSize kUsualSize(1500, kTabHeight + 900 + StateLine::kHeight);
/// What a window manager's frame takes.
constexpr QSize kFrame(16, 40);
constexpr int kLongestTabTitle = 40;
const QString kTitle = QStringLiteral("SCN4070A");

/// A resource tells itself from others at its end too.
QString shortened(const QString& title)
{
    constexpr int kHalf = kLongestTabTitle / 2;
    return title.size() <= kLongestTabTitle
               ? title
               : title.left(kHalf - 1) + QStringLiteral("…") + title.right(kHalf);
}

/// The nearest place and size that lie on the screen.
QRect inside(const QRect& wanted, const QRect& screen)
{
    QRect place(wanted.topLeft(), wanted.size().boundedTo(screen.size() - kFrame));
    place.moveLeft(std::clamp(place.left(), screen.left(), screen.right() + 1 - place.width()));
    place.moveTop(std::clamp(place.top(), screen.top(), screen.bottom() + 1 - place.height()));
    return place;
}

/// What becomes of the scans that are on in these tabs.
AfterEnd afterEndOf(const QList<InstrumentTab*>& tabs)
{
    const bool goesOn = std::any_of(tabs.cbegin(), tabs.cend(), [](const InstrumentTab* tab) {
        return tab->isScanning() && !tab->isSimulated();
    });
    return goesOn ? AfterEnd::ScanGoesOn : AfterEnd::ScanEnds;
}

} // namespace

LauncherWindow::LauncherWindow(const Workshop& workshop)
    : m_workshop(workshop)
    , m_tabs(new QTabWidget(this))
{
    auto* more = new QToolButton(this);
    more->setObjectName(QStringLiteral("newTab"));
    more->setText(QStringLiteral("+"));
    more->setToolTip(tr("打开另一台仪器"));
    // The keyboard stays with the embedded window.
    more->setFocusPolicy(Qt::NoFocus);
    m_tabs->tabBar()->setFocusPolicy(Qt::NoFocus);
    m_tabs->tabBar()->setFixedHeight(kTabHeight);
    m_tabs->setTabsClosable(true);
    m_tabs->setDocumentMode(true);
    m_tabs->setCornerWidget(more);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tabs);
    connect(more, &QToolButton::clicked, this, &LauncherWindow::addTab);
    connect(m_tabs, &QTabWidget::tabCloseRequested, this, &LauncherWindow::closeTab);
    connect(m_tabs, &QTabWidget::currentChanged, this, &LauncherWindow::updateTitles);
    addTab();
    restorePlace();
}

void LauncherWindow::open(const InstrumentChoice& choice)
{
    tabAt(m_tabs->currentIndex())->open(choice);
}

void LauncherWindow::restorePlace()
{
    // Sizes a window that was maximised too, and brings one back from a screen that is gone.
    const bool isRestored = restoreGeometry(m_workshop.settings.geometry());
    const QRect free = screen()->availableGeometry();
    if (!isRestored) {
        resize(kUsualSize.boundedTo(free.size() - kFrame));
        // The place is that of the frame.
        move(free.center() - QRect(QPoint(), size() + kFrame).center());
    } else if (!isMaximized()) {
        setGeometry(inside(geometry(), free));
    }
}

InstrumentTab* LauncherWindow::tabAt(int index) const
{
    return static_cast<InstrumentTab*>(m_tabs->widget(index));
}

QList<InstrumentTab*> LauncherWindow::tabs() const
{
    QList<InstrumentTab*> all;
    for (int index = 0; index < m_tabs->count(); ++index) {
        all.append(tabAt(index));
    }
    return all;
}

InstrumentTab* LauncherWindow::addTab()
{
    auto* tab = new InstrumentTab(m_workshop, m_tabs);
    connect(tab, &InstrumentTab::titleChanged, this, &LauncherWindow::updateTitles);
    connect(tab, &InstrumentTab::idle, this, [this, tab] { onIdle(tab); });
    m_tabs->setCurrentIndex(m_tabs->addTab(tab, QString()));
    updateTitles();
    return tab;
}

void LauncherWindow::closeTab(int index)
{
    InstrumentTab* const tab = tabAt(index);
    const auto leave = [this, tab] {
        if (!tab->isBusy()) {
            removeTab(tab);
        } else if (!m_leaving.contains(tab)) {
            m_leaving.append(tab);
            tab->end();
        }
    };
    if (tab->isScanning()) {
        askToLeaveScan(tab, afterEndOf({tab}), leave);
    } else {
        leave();
    }
}

void LauncherWindow::removeTab(InstrumentTab* tab)
{
    m_tabs->removeTab(m_tabs->indexOf(tab));
    tab->deleteLater();
    if (m_tabs->count() == 0) {
        addTab();
    }
}

void LauncherWindow::onIdle(InstrumentTab* tab)
{
    if (m_isClosing) {
        if (!isBusy()) {
            close();
        }
    } else if (m_leaving.removeAll(tab) > 0) {
        removeTab(tab);
    }
}

void LauncherWindow::updateTitles()
{
    for (int index = 0; index < m_tabs->count(); ++index) {
        const QString title = tabAt(index)->title();
        const QString trouble = tabAt(index)->trouble();
        const QString text = title.isEmpty() ? tr("选择仪器") : shortened(title);
        m_tabs->setTabText(index, trouble.isEmpty() ? text : tr("%1：%2").arg(trouble, text));
        m_tabs->setTabIcon(index, trouble.isEmpty()
                                      ? QIcon()
                                      : style()->standardIcon(QStyle::SP_MessageBoxWarning));
        m_tabs->setTabToolTip(index, trouble.isEmpty() ? title : tr("%1：%2").arg(trouble, title));
    }
    const InstrumentTab* current = tabAt(m_tabs->currentIndex());
    const QString identity = current ? current->identity() : QString();
    setWindowTitle(identity.isEmpty() ? kTitle : kTitle + QStringLiteral(" - ") + identity);
}

bool LauncherWindow::isBusy() const
{
    const QList<InstrumentTab*> all = tabs();
    return std::any_of(all.cbegin(), all.cend(),
                       [](const InstrumentTab* tab) { return tab->isBusy(); });
}

void LauncherWindow::endAll()
{
    m_isClosing = true;
    for (InstrumentTab* tab : tabs()) {
        tab->end();
    }
    if (!isBusy()) {
        close();
    }
}

void LauncherWindow::closeEvent(QCloseEvent* event)
{
    if (!isBusy()) {
        m_workshop.settings.setGeometry(saveGeometry());
        event->accept();
        return;
    }
    // The window lives on until the children have ended.
    event->ignore();
    if (m_isClosing) {
        return;
    }
    const QList<InstrumentTab*> all = tabs();
    const bool scans = std::any_of(all.cbegin(), all.cend(),
                                   [](const InstrumentTab* tab) { return tab->isScanning(); });
    if (scans) {
        askToLeaveScan(this, afterEndOf(all), [this] { endAll(); });
    } else {
        endAll();
    }
}

} // namespace scnlauncher
