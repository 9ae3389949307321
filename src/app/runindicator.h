#pragma once

#include <QCoreApplication>

#include <chrono>

namespace scn {

struct ButtonBarForm;

/// Shows the run in the bar below the pages. GUI thread.
class RunIndicator
{
    Q_DECLARE_TR_FUNCTIONS(MainWidget)

public:
    /// Keeps a reference to `form`, which may be filled later. The running label checks every
    /// `storeWatch` whether readings are stored.
    RunIndicator(const ButtonBarForm& form, std::chrono::milliseconds storeWatch);

    /// The start button now stops the run, and the export is disabled.
    void showStarted();

    void showIdle();

    /// Warns beside the running label while readings cannot be stored.
    void showStoreState(bool refusesReadings);

private:
    const ButtonBarForm& m_form;
    const std::chrono::milliseconds m_storeWatch;
};

} // namespace scn
