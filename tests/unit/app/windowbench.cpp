#include "windowbench.h"

#include "acquisition/readdata.h"
#include "app/mainwidget.h"
#include "channels/advancedsetting.h"
#include "common/channelnumber.h"
#include "common/helperthreads.h"
#include "overlay/loadingview.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"

#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include <algorithm>

using namespace scn;

using namespace std::chrono_literals;

namespace {

/// The overlays of the window; the recovery form is the one with a button.
LoadingView* overlay(const MainWidget& window, bool isRecovery)
{
    const auto views = window.findChildren<LoadingView*>(QString(), Qt::FindDirectChildrenOnly);
    for (LoadingView* view : views) {
        if ((view->findChild<QPushButton*>() != nullptr) == isRecovery) {
            return view;
        }
    }
    return nullptr;
}

/// The group with this title that the panel shows.
const QGroupBox* groupOf(const AdvancedSetting* panel, const QString& title)
{
    for (const QGroupBox* group : panel->findChildren<QGroupBox*>()) {
        if (group->title() == title && group->isVisible()) {
            return group;
        }
    }
    qFatal("no group %s", qPrintable(title));
}

} // namespace

WindowBench::WindowBench()
{
    windowTiming.storeWatch = 20ms;
    windowTiming.launcher = {2ms, 2ms, 100ms};
    windowTiming.lock = {10ms, 10ms};
    acquisitionTiming.startDelay = 20ms;
    acquisitionTiming.passDelay = 20ms;
    acquisitionTiming.settleDelay = 1ms;
    acquisitionTiming.fetchRetryDelay = 2ms;
    acquisitionTiming.silenceDelay = 20ms;

    g_resourceName = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");
    g_instrumentId.clear();
    g_instrumentConnected = false;
    g_scanRunning = false;
    g_scanChannels.clear();
    g_scanStartText.clear();
    g_scanEndText.clear();
    for (int slot = 0; slot <= kSlotCount; ++slot) {
        slotPresent[slot] = false;
        slotModuleType[slot] = 0;
        slotLastChannel[slot] = 0;
    }
}

WindowBench::~WindowBench()
{
    if (m_window) {
        endAcquisition();
    }
    close();
}

MainWidget& WindowBench::open(Acquisition acquisition)
{
    // One that is ended at once sleeps until then.
    ReadData::instance()->setTiming(acquisition == AcquisitionRuns ? acquisitionTiming
                                                                   : ReadDataTiming());
    m_instrument.ignoreThread(ReadData::instance());
    m_window = std::make_unique<MainWidget>(nullptr, windowTiming);
    if (acquisition == AcquisitionEnded) {
        endAcquisition();
    }
    m_startUpLines = m_instrument.takeLines();
    return *m_window;
}

void WindowBench::endAcquisition()
{
    ReadData::instance()->terminate();
    ReadData::instance()->wait();
}

void WindowBench::settle()
{
    QVERIFY(helperthreads::waitForAll(10s));
    // A step that was posted may post one more.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::processEvents();
    }
}

void WindowBench::close()
{
    m_window.reset();
    m_instrument.ignoreThread(nullptr);
}

void WindowBench::call(const char* slot) const
{
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), slot));
}

void WindowBench::readBack(int channel) const
{
    QVERIFY(QMetaObject::invokeMethod(m_window.get(), "recvAdvancedSettingChanged",
                                      Q_ARG(int, channel)));
}

void WindowBench::loseAndRecover() const
{
    call("recvUseInstSlot");
    clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(reconnectView()->isHidden(), 10000);
    endAcquisition();
}

QTreeWidget* WindowBench::tree() const
{
    return m_window->findChild<QTreeWidget*>();
}

QTreeWidgetItem* WindowBench::module(int slot) const
{
    // The modules are in the order of their slots.
    int index = 0;
    for (int before = 1; before < slot; ++before) {
        index += slotPresent[before] ? 1 : 0;
    }
    return tree()->topLevelItem(index);
}

QTreeWidgetItem* WindowBench::item(int channel) const
{
    const auto number = scn::ChannelNumber::fromLabel(channel);
    return module(number.slot())->child(number.row());
}

void WindowBench::tick(int channel, bool on) const
{
    item(channel)->setCheckState(ScanColumn, on ? Qt::Checked : Qt::Unchecked);
}

QList<int> WindowBench::tickedChannels() const
{
    QList<int> channels;
    for (int slot = 1; slot <= kSlotCount; ++slot) {
        for (int row = 0; slotPresent[slot] && row < module(slot)->childCount(); ++row) {
            if (module(slot)->child(row)->checkState(ScanColumn) == Qt::Checked) {
                channels.append(scn::ChannelNumber::fromRow(slot, row).label());
            }
        }
    }
    return channels;
}

CustomComboBox* WindowBench::box(int channel, ChannelColumn column) const
{
    return cell<CustomComboBox>(channel, column);
}

CustomLineEdit* WindowBench::edit(int channel, ChannelColumn column) const
{
    return cell<CustomLineEdit>(channel, column);
}

QStringList WindowBench::itemsOf(const CustomComboBox* box)
{
    QStringList items;
    for (int row = 0; row < box->count(); ++row) {
        items.append(box->itemText(row));
    }
    return items;
}

AdvancedSetting* WindowBench::openPanel(int channel, ChannelColumn column) const
{
    cell<QPushButton>(channel, column)->click();
    const auto panels = m_window->findChildren<AdvancedSetting*>();
    const auto shown = std::find_if(panels.cbegin(), panels.cend(),
                                    [](const auto* panel) { return panel->isVisible(); });
    return shown != panels.cend() ? *shown : nullptr;
}

QString WindowBench::choiceOf(const AdvancedSetting* panel, const QString& groupTitle)
{
    const QGroupBox* group = groupOf(panel, groupTitle);
    if (const auto* list = group->findChild<QComboBox*>()) {
        return list->currentText();
    }
    for (const QRadioButton* radio : group->findChildren<QRadioButton*>()) {
        if (radio->isChecked()) {
            return radio->text();
        }
    }
    return {};
}

double WindowBench::numberOf(const AdvancedSetting* panel, const QString& groupTitle)
{
    return groupOf(panel, groupTitle)->findChild<QDoubleSpinBox*>()->value();
}

QAbstractButton* WindowBench::button(const QString& text, const QString& group) const
{
    const auto isIn = [](const QWidget* widget, const QString& title) {
        for (; widget; widget = widget->parentWidget()) {
            const auto* box = qobject_cast<const QGroupBox*>(widget);
            if (box && box->title() == title) {
                return true;
            }
        }
        return false;
    };
    for (QAbstractButton* candidate : m_window->findChildren<QAbstractButton*>()) {
        if (candidate->text() == text && (group.isEmpty() || isIn(candidate, group))) {
            return candidate;
        }
    }
    return nullptr;
}

ImageButton* WindowBench::startButton() const
{
    return m_window->findChildren<ImageButton*>(QStringLiteral("imageButton")).value(0);
}

ImageButton* WindowBench::exportButton() const
{
    return m_window->findChildren<ImageButton*>(QStringLiteral("imageButton")).value(1);
}

QLabel* WindowBench::runningLabel() const
{
    for (QLabel* label : m_window->findChildren<QLabel*>()) {
        if (label->text() == QStringLiteral("数据记录正在运行..")) {
            return label;
        }
    }
    return nullptr;
}

LoadingView* WindowBench::startupView() const
{
    return overlay(*m_window, false);
}

LoadingView* WindowBench::reconnectView() const
{
    return overlay(*m_window, true);
}

void WindowBench::clickRecovery() const
{
    reconnectView()->findChild<QPushButton*>()->click();
}

CustomMessageDialog* WindowBench::messageDialog() const
{
    return m_window->findChild<CustomMessageDialog*>();
}

QString WindowBench::message() const
{
    const CustomMessageDialog* const dialog = messageDialog();
    if (!dialog->isVisible()) {
        return {};
    }
    QString text;
    for (const QLabel* label : dialog->findChildren<QLabel*>()) {
        text += label->text();
    }
    return text;
}

QStringList scalingQueries(int channel)
{
    QStringList lines;
    for (const char* query :
         {"CALC:SCAL:GAIN? (@%1)", "CALC:SCAL:OFFS? (@%1)", "CALC:SCAL:STAT? (@%1)",
          "CALC:SCAL:UNIT? (@%1)", "CALC:SCAL:FUNC? (@%1)", "CALC:SCAL:REF:AUTO? (@%1)",
          "CALC:SCAL:REF? (@%1)", "CALC:SCAL:DBM:REF? (@%1)", "CALC:SCAL:DB:REF? (@%1)"}) {
        lines.append(QString::fromLatin1(query).arg(channel));
    }
    return lines;
}

QStringList voltageReadBack(int channel)
{
    QStringList lines;
    for (const char* query : {"ROUT:CHAN:LAB? (@%1)", "FUNC? (@%1)", "VOLT:DC:RANG:AUTO? (@%1)",
                              "ROUT:CHAN:DEL:AUTO? (@%1)", "VOLT:DC:NPLC? (@%1)",
                              "INP:IMP:AUTO? (@%1)", "VOLT:REF? (@%1)"}) {
        lines.append(QString::fromLatin1(query).arg(channel));
    }
    return lines + scalingQueries(channel);
}
