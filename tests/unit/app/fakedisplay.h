#pragma once

#include "app/instrumentdisplay.h"

#include <QSet>
#include <QStringList>

/// Notes what the read-back shows, one line each: "option 101 RangeRow 0".
class FakeDisplay final : public scn::InstrumentDisplay
{
public:
    void instrumentFound() override;
    bool hasModule(int slot) const override { return builtSlots.contains(slot); }
    void showScanList(const QList<int>& channels) override;
    bool showFunction(int channel, const QString& displayName) override;
    void showOption(int channel, scn::ChannelOption option, const QVariant& value) override;
    void showTriggerSource(scn::TriggerChoice source) override;
    void showInterval(std::chrono::seconds interval) override;
    void showSweepCount(std::optional<int> count) override;
    void showUsbLogging(bool on) override;
    void showRowLimitOn(bool on) override;
    void showRowLimit(int rows) override;
    void readBackDone() override;

    /// The lines since the last call.
    QStringList takeShown();

    QSet<int> builtSlots;
    bool hasRows = true;

private:
    void note(const QString& line);

    QStringList m_shown;
};
