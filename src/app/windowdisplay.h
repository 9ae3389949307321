#pragma once

#include "app/instrumentdisplay.h"

#include <functional>

namespace scn {

class ChannelTable;
class FourWirePartners;
class ScanMarks;
struct LoggingForm;

/// Shows the instrument's state in the channel table and on the recording page. GUI thread.
class WindowDisplay final : public InstrumentDisplay
{
public:
    /// Keeps references to all of them; the table and the form may be filled later.
    WindowDisplay(const ChannelTable& table, const ScanMarks& marks,
                  const FourWirePartners& partners, const LoggingForm& form,
                  std::function<void()> onFound);

    void instrumentFound() override;
    bool hasModule(int slot) const override;
    void showScanList(const QList<int>& channels) override;

    /// Selects the function and takes the partner or gives it back, as if the user had chosen it. Changes nothing
    /// if the row does not offer the name, or if the row is taken: it shows the function that took it.
    bool showFunction(int channel, const QString& displayName) override;

    void showOption(int channel, ChannelOption option, const QVariant& value) override;
    void showTriggerSource(TriggerChoice source) override;
    void showInterval(std::chrono::seconds interval) override;

    /// The signals are not blocked: a control that changes sends its command.
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
