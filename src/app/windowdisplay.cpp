#include "app/windowdisplay.h"

#include "app/channelform.h"
#include "app/channeloptions.h"
#include "app/channeltable.h"
#include "app/fourwirepartners.h"
#include "app/loggingform.h"
#include "app/quietcontrols.h"
#include "app/scanmarks.h"
#include "common/threadassert.h"
#include "widgets/customcombobox.h"
#include "widgets/timepicker.h"

#include <QCheckBox>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include <utility>

namespace scn {

namespace {

QRadioButton* radioOf(const LoggingForm& form, TriggerChoice source)
{
    switch (source) {
    case TriggerChoice::Immediate:
        return form.m_startNowRadio;
    case TriggerChoice::Alarm:
        return form.m_startOnAlarmRadio;
    case TriggerChoice::Timer:
        return form.m_intervalCustomRadio;
    }
    Q_UNREACHABLE();
}

} // namespace

WindowDisplay::WindowDisplay(const ChannelTable& table, const ScanMarks& marks,
                             const FourWirePartners& partners, const LoggingForm& form,
                             std::function<void()> onFound)
    : m_table(table)
    , m_marks(marks)
    , m_partners(partners)
    , m_form(form)
    , m_onFound(std::move(onFound))
{
}

void WindowDisplay::instrumentFound()
{
    m_onFound();
}

bool WindowDisplay::hasModule(int slot) const
{
    return m_table.form().slotItems.contains(slot);
}

void WindowDisplay::showScanList(const QList<int>& channels)
{
    m_marks.check(channels);
}

bool WindowDisplay::showFunction(int channel, const QString& displayName)
{
    assertGuiThread();
    CustomComboBox* const box = m_table.row(channel).function;
    if (!box) {
        return false;
    }
    if (m_partners.isTakenOver(channel)) {
        return true;
    }
    const QSignalBlocker blocker(box);
    const int row = box->findText(displayName, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row >= 0) {
        box->setCurrentIndex(row);
        m_partners.match(channel);
    }
    return true;
}

void WindowDisplay::showOption(int channel, ChannelOption option, const QVariant& value)
{
    const ChannelRow row = m_table.row(channel);
    if (row.exists()) {
        showChannelOption(row, option, value);
    }
}

void WindowDisplay::showTriggerSource(TriggerChoice source)
{
    assertGuiThread();
    QRadioButton* const radio = radioOf(m_form, source);
    const QSignalBlocker blocker(radio);
    radio->setChecked(true);
}

void WindowDisplay::showInterval(std::chrono::seconds interval)
{
    assertGuiThread();
    using Days =
        std::chrono::duration<int, std::ratio_multiply<std::ratio<24>, std::chrono::hours::period>>;
    const auto days = std::chrono::duration_cast<Days>(interval);
    const auto hours = std::chrono::duration_cast<std::chrono::hours>(interval - days);
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(interval - days - hours);
    const std::chrono::seconds seconds = interval - days - hours - minutes;
    const QSignalBlocker blocker(m_form.m_intervalPicker);
    m_form.m_intervalPicker->setEnabled(true);
    m_form.m_intervalPicker->setTime(days.count(), static_cast<int>(hours.count()),
                                     static_cast<int>(minutes.count()),
                                     static_cast<int>(seconds.count()), 0);
}

void WindowDisplay::showSweepCount(std::optional<int> count)
{
    assertGuiThread();
    if (!count) {
        m_form.m_stopManualRadio->setChecked(true);
        return;
    }
    m_form.m_stopCountRadio->setChecked(true);
    m_form.m_stopCountBox->setValue(*count);
}

void WindowDisplay::showUsbLogging(bool on)
{
    m_form.m_usbLogCheck->setChecked(on);
}

void WindowDisplay::showRowLimitOn(bool on)
{
    m_form.m_rowLimitCheck->setChecked(on);
}

void WindowDisplay::showRowLimit(int rows)
{
    m_form.m_rowLimitSpin->setValue(rows);
}

void WindowDisplay::readBackDone()
{
    m_marks.rebuildScanChannels();
}

} // namespace scn
