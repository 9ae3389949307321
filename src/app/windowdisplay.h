#pragma once

#include "app/instrumentdisplay.h"

#include <functional>

namespace scn {

class ChannelTable;
class FourWirePartners;
class ScanMarks;
struct LoggingForm;

/// Shows the instrument's state in the channel table and on the logging page. GUI thread.
class WindowDisplay final : public InstrumentDisplay
{
public:
    /// Refers to all of it; the table and the form may be filled later.
    WindowDisplay(const ChannelTable& table, const ScanMarks& marks,
                  const FourWirePartners& partners, const LoggingForm& form,
                  std::function<void()> onFound);

    void instrumentFound() override;
    bool hasModule(int slot) const override;
    void showScanList(const QList<int>& channels) override;

    /// Takes the partner over or gives it back as choosing the function does. A name that the row does not
    /// offer changes nothing, and nor does any name in a row that is taken over: it shows the function of
    /// the row that has it.
    bool showFunction(int channel, const QString& displayName) override;

    void showOption(int channel, ChannelOption option, const QVariant& value) override;
    void showTriggerSource(TriggerSource source) override;
    void showInterval(std::chrono::seconds interval) override;

    /// The controls' signals are live: one that changes sends its command.
    void showSweepCount(std::optional<int> count) override;

    void showUsbLogging(bool on) override;
    void showRowLimitOn(bool on) override;
    void showRowLimit(int rows) override;
    void readBackDone() override;

private:
    const ChannelTable& m_table;
    const ScanMarks& m_marks;
    const FourWirePartners& m_partners;
    const LoggingForm& m_form;
    const std::function<void()> m_onFound;
};

} // namespace scn
