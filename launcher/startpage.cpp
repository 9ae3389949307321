#include "launcher/startpage.h"

#include "launcher/devicerights.h"
#include "launcher/runlimitsdialog.h"
#include "launcher/serialports.h"
#include "launcher/serialrate.h"
#include "launcher/usbinstruments.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace scnlauncher {
namespace {

constexpr int kResourceRole = Qt::UserRole;
constexpr int kProblemRole = Qt::UserRole + 1;
constexpr int kRecentRole = Qt::UserRole + 2;
constexpr int kNameWidth = 420;
constexpr int kRates[] = {9600, 19200, 38400, kUsualSerialRate, 115200};

bool isSimulated(const QTreeWidgetItem* item)
{
    return item && item->data(0, kResourceRole).isValid() &&
           item->data(0, kResourceRole).toString().isEmpty();
}

} // namespace

InstrumentSources InstrumentSources::ofThisMachine()
{
    return {[] { return findSerialPorts(); }, [] { return findUsbInstruments(); },
            QStringLiteral("avahi-browse")};
}

StartPage::StartPage(const InstrumentSources& sources, const LauncherSettings& settings,
                     QWidget* parent)
    : QWidget(parent)
    , m_sources(sources)
    , m_settings(settings)
    , m_network(nullptr, sources.networkTool)
    , m_list(new QTreeWidget(this))
{
    auto* title = new QLabel(tr("选择要打开的仪器"), this);
    title->setObjectName(QStringLiteral("pageTitle"));
    m_list->setObjectName(QStringLiteral("instruments"));
    m_list->setHeaderLabels({tr("仪器"), tr("资源")});
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    m_list->header()->resizeSection(0, kNameWidth);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(m_list);
    layout->addWidget(buildForm());
    addRemoval();
    connect(m_list, &QTreeWidget::currentItemChanged, this, [this] { showCurrent(); });
    connect(m_list, &QTreeWidget::itemActivated, this, [this] { openCurrent(); });
    connect(&m_network, &NetworkSearch::found, this, [this](const FoundInstruments& instruments) {
        addInstruments(m_networkSection, instruments, tr("没有发现网络仪器"));
    });
    connect(&m_network, &NetworkSearch::unavailable, this, [this] {
        addInstruments(m_networkSection, {},
                       tr("服务发现没有运行（avahi-daemon，avahi-utils），请在下方输入资源名"));
    });
    refresh();
}

QWidget* StartPage::buildForm()
{
    auto* form = new QWidget(this);
    m_resource = new QLineEdit(form);
    m_resource->setObjectName(QStringLiteral("resource"));
    m_resource->setPlaceholderText(tr("VISA 资源名，例如 TCPIP0::192.168.1.5::5025::SOCKET"));
    m_rate = new QComboBox(form);
    m_rate->setObjectName(QStringLiteral("rate"));
    for (const int rate : kRates) {
        m_rate->addItem(tr("%1 波特").arg(rate), rate);
    }
    showRate(kUsualSerialRate);
    m_open = new QPushButton(tr("打开"), form);
    m_open->setObjectName(QStringLiteral("open"));
    auto* again = new QPushButton(tr("刷新"), form);
    again->setObjectName(QStringLiteral("refresh"));
    auto* limits = new QPushButton(tr("已保留的数据..."), form);
    limits->setObjectName(QStringLiteral("keptRuns"));
    m_problem = new QLabel(this);
    m_problem->setObjectName(QStringLiteral("problem"));
    m_problem->setWordWrap(true);
    auto* row = new QHBoxLayout;
    row->addWidget(m_resource);
    row->addWidget(m_rate);
    row->addWidget(m_open);
    row->addWidget(again);
    row->addWidget(limits);
    auto* layout = new QVBoxLayout(form);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(row);
    layout->addWidget(m_problem);
    connect(m_open, &QPushButton::clicked, this, &StartPage::openCurrent);
    connect(again, &QPushButton::clicked, this, &StartPage::refresh);
    connect(limits, &QPushButton::clicked, this, [this] {
        auto* dialog = new RunLimitsDialog(m_settings, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    });
    connect(m_resource, &QLineEdit::returnPressed, this, &StartPage::openCurrent);
    connect(m_resource, &QLineEdit::textEdited, this, [this] {
        m_list->setCurrentItem(nullptr);
        const int last = m_settings.serialRate(m_resource->text().trimmed());
        if (last > 0) {
            showRate(last);
        }
        updateForm();
    });
    return form;
}

void StartPage::refresh()
{
    const QSignalBlocker blocker(m_list);
    const QTreeWidgetItem* before = m_list->currentItem();
    const QVariant chosen = before ? before->data(0, kResourceRole) : QVariant();
    m_list->clear();
    QTreeWidgetItem* simulated = addSection(tr("模拟仪器"));
    addInstruments(simulated, {{tr("模拟的 SCN4070A"), QStringLiteral(""), {}}}, {});
    addRecent();
    addInstruments(addSection(tr("串口")), m_sources.serialPorts(), tr("没有发现串口"));
    addInstruments(addSection(tr("USB")), m_sources.usbInstruments(), tr("没有发现 USB 仪器"));
    m_networkSection = addSection(tr("网络"));
    addInstruments(m_networkSection, {}, tr("正在查找..."));
    m_network.start();
    // What was chosen or typed stays.
    QTreeWidgetItem* same = m_resource->text().isEmpty() ? simulated->child(0) : itemOf(chosen);
    m_list->setCurrentItem(same);
    updateForm();
}

/// The line of a resource; null if there is none.
QTreeWidgetItem* StartPage::itemOf(const QVariant& resource) const
{
    for (int section = 0; resource.isValid() && section < m_list->topLevelItemCount(); ++section) {
        const QTreeWidgetItem* lines = m_list->topLevelItem(section);
        for (int row = 0; row < lines->childCount(); ++row) {
            if (lines->child(row)->data(0, kResourceRole) == resource) {
                return lines->child(row);
            }
        }
    }
    return nullptr;
}

QTreeWidgetItem* StartPage::addSection(const QString& title)
{
    auto* section = new QTreeWidgetItem(m_list, {title});
    section->setFlags(Qt::ItemIsEnabled);
    section->setFirstColumnSpanned(true);
    section->setExpanded(true);
    return section;
}

/// Fills a section, in place of what it held.
void StartPage::addInstruments(QTreeWidgetItem* section, const FoundInstruments& instruments,
                               const QString& textIfNone)
{
    qDeleteAll(section->takeChildren());
    for (const FoundInstrument& instrument : instruments) {
        auto* item = new QTreeWidgetItem(section, {instrument.name, instrument.resource});
        item->setData(0, kResourceRole, instrument.resource);
        item->setData(0, kProblemRole, instrument.problem);
        if (!instrument.problem.isEmpty()) {
            item->setText(1, instrument.problem);
            item->setForeground(1, QColor(0xE0, 0xA0, 0x30));
        }
    }
    if (instruments.isEmpty()) {
        auto* none = new QTreeWidgetItem(section, {textIfNone});
        none->setFlags(Qt::NoItemFlags);
        none->setFirstColumnSpanned(true);
    }
}

void StartPage::addRecent()
{
    FoundInstruments recent;
    for (const QString& resource : m_settings.recentResources()) {
        recent.append({resource, resource, rightsProblem(deviceOf(resource))});
    }
    if (recent.isEmpty()) {
        return;
    }
    QTreeWidgetItem* section = addSection(tr("最近使用"));
    addInstruments(section, recent, {});
    for (int row = 0; row < section->childCount(); ++row) {
        section->child(row)->setData(0, kRecentRole, true);
    }
}

/// A mistyped resource should not stay for ever.
void StartPage::addRemoval()
{
    m_removal = new QAction(tr("从最近使用中移除"), m_list);
    m_removal->setShortcut(Qt::Key_Delete);
    m_removal->setShortcutContext(Qt::WidgetShortcut);
    m_list->addAction(m_removal);
    connect(m_removal, &QAction::triggered, this, &StartPage::removeCurrentRecent);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_list, &QTreeWidget::customContextMenuRequested, this, [this](const QPoint& place) {
        if (m_removal->isEnabled()) {
            auto* menu = new QMenu(m_list);
            menu->setAttribute(Qt::WA_DeleteOnClose);
            menu->addAction(m_removal);
            menu->popup(m_list->viewport()->mapToGlobal(place));
        }
    });
}

void StartPage::removeCurrentRecent()
{
    QTreeWidgetItem* item = m_list->currentItem();
    QTreeWidgetItem* section = item->parent();
    m_settings.forget(item->data(0, kResourceRole).toString());
    delete item;
    if (section->childCount() == 0) {
        delete section;
    }
}

void StartPage::showCurrent()
{
    const QTreeWidgetItem* item = m_list->currentItem();
    if (item && item->data(0, kResourceRole).isValid()) {
        const QString resource = item->data(0, kResourceRole).toString();
        const int last = m_settings.serialRate(resource);
        m_resource->setText(resource);
        showRate(last > 0 ? last : kUsualSerialRate);
    }
    updateForm();
}

void StartPage::showRate(int rate)
{
    if (m_rate->findData(rate) < 0) {
        m_rate->addItem(tr("%1 波特").arg(rate), rate);
    }
    m_rate->setCurrentIndex(m_rate->findData(rate));
}

void StartPage::updateForm()
{
    const QTreeWidgetItem* item = m_list->currentItem();
    const QString resource = m_resource->text().trimmed();
    m_rate->setEnabled(isSerial(resource));
    m_removal->setEnabled(item && item->data(0, kRecentRole).toBool());
    m_open->setEnabled(!resource.isEmpty() || isSimulated(item));
    m_problem->setText(rightsProblem(deviceOf(resource)));
}

void StartPage::openCurrent()
{
    const QString resource = m_resource->text().trimmed();
    if (isSimulated(m_list->currentItem())) {
        emit chosen({{}, true, 0});
        return;
    }
    if (resource.isEmpty()) {
        return;
    }
    emit chosen({resource, false, isSerial(resource) ? m_rate->currentData().toInt() : 0});
}

} // namespace scnlauncher
