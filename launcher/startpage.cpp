#include "launcher/startpage.h"

#include "launcher/devicerights.h"
#include "launcher/runlimitsdialog.h"
#include "launcher/serialports.h"
#include "launcher/usbinstruments.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace scnlauncher {
namespace {

constexpr int kResourceRole = Qt::UserRole;
constexpr int kProblemRole = Qt::UserRole + 1;
constexpr int kNameWidth = 420;
constexpr int kProgramsRate = 57600;
constexpr int kRates[] = {9600, 19200, 38400, kProgramsRate, 115200};

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
    const int remembered = m_rate->findData(m_settings.serialRate());
    m_rate->setCurrentIndex(remembered >= 0 ? remembered : m_rate->findData(kProgramsRate));
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
        updateForm();
    });
    return form;
}

void StartPage::refresh()
{
    const QSignalBlocker blocker(m_list);
    m_list->clear();
    QTreeWidgetItem* simulated = addSection(tr("模拟仪器"));
    addInstruments(simulated, {{tr("模拟的 SCN4070A"), QStringLiteral(""), {}}}, {});
    addRecent();
    addInstruments(addSection(tr("串口")), m_sources.serialPorts(), tr("没有发现串口"));
    addInstruments(addSection(tr("USB")), m_sources.usbInstruments(), tr("没有发现 USB 仪器"));
    m_networkSection = addSection(tr("网络"));
    addInstruments(m_networkSection, {}, tr("正在查找..."));
    m_network.start();
    m_list->setCurrentItem(simulated->child(0));
    showCurrent();
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
    if (!recent.isEmpty()) {
        addInstruments(addSection(tr("最近使用")), recent, {});
    }
}

void StartPage::showCurrent()
{
    const QTreeWidgetItem* item = m_list->currentItem();
    if (item && item->data(0, kResourceRole).isValid()) {
        m_resource->setText(item->data(0, kResourceRole).toString());
    }
    updateForm();
}

void StartPage::updateForm()
{
    const QString resource = m_resource->text().trimmed();
    const bool isSerial = resource.startsWith(QLatin1String("ASRL"), Qt::CaseInsensitive);
    m_rate->setEnabled(isSerial);
    m_open->setEnabled(!resource.isEmpty() || isSimulated(m_list->currentItem()));
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
    const bool isSerial = m_rate->isEnabled();
    if (isSerial) {
        m_settings.setSerialRate(m_rate->currentData().toInt());
    }
    m_settings.addRecentResource(resource);
    emit chosen({resource, false, isSerial ? m_rate->currentData().toInt() : 0});
}

} // namespace scnlauncher
