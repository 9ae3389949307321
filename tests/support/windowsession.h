#pragma once

#include "support/readings.h"

#include <QList>

class BarChartWidget;
class ImageButton;
class MainWidget;

/// The main window in this process, operated through its widgets.
class WindowSession
{
public:
    explicit WindowSession(MainWidget& window);

    /// Checks the boxes of all modules.
    void checkAllModules();

    /// The button that starts and stops.
    ImageButton* startButton() const;

    /// Opens a chart with the side bar's button; null when none came up. Switches to the workspace.
    BarChartWidget* openChart();

    /// Gives the chart's first `count` rows the channels of the scan list from number `first` on.
    static void assignChannels(BarChartWidget* chart, int first, int count);

    /// The readings in memory of the series behind the curves of some charts.
    static Readings readingsBehind(const QList<BarChartWidget*>& charts);

private:
    MainWidget& m_window;
};
