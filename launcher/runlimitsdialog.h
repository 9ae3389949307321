#pragma once

#include "launcher/launchersettings.h"

#include <QDialog>

class QCheckBox;
class QSpinBox;
class QVBoxLayout;

namespace scnlauncher {

/// Asks how much is kept of the runs that the program has deleted.
class RunLimitsDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RunLimitsDialog)

public:
    RunLimitsDialog(const LauncherSettings& settings, QWidget* parent);

    void accept() override;

private:
    /// One limit, which may be off.
    struct Limit
    {
        QCheckBox* isOn;
        QSpinBox* value;
    };

    Limit addLimit(QVBoxLayout* layout, const QString& name, const QString& text,
                   const QString& unit, int value, int usual);

    const LauncherSettings& m_settings;
    Limit m_days;
    Limit m_runs;
    Limit m_megabytes;
};

} // namespace scnlauncher
