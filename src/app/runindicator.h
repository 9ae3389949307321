#pragma once

#include <QCoreApplication>

namespace scn {

struct ButtonBarForm;

/// Shows in the bar below the pages what the run is at. GUI thread.
class RunIndicator
{
    Q_DECLARE_TR_FUNCTIONS(RunIndicator)

public:
    /// Refers to `form`, which may be filled later.
    explicit RunIndicator(const ButtonBarForm& form);

    /// From the click on start: the start button stops the run, and there is no export.
    void showStarted();

    void showIdle();

    /// Says beside the running label when readings cannot be stored.
    void showStoreState(bool refusesReadings);

private:
    const ButtonBarForm& m_form;
};

} // namespace scn
