#pragma once

#include "support/readings.h"

#include <QList>

class BarChartWidget;
class ImageButton;
class MainWidget;
class QPushButton;

/// The main window in this process, operated through its widgets.
class WindowSession
{
public:
    explicit WindowSession(MainWidget& window);

    /// Ticks all modules.
    void checkAllModules();

    /// The start/stop button.
    ImageButton* startButton() const;

    /// The side bar's button for charts, within reach: switches to the workspace and opens the bar. Null if
    /// it does not open.
    QPushButton* chartButton() const;

    /// Opens a chart with that button; null if none appeared.
    BarChartWidget* openChart() const;

    /// Assigns channels of the scan list, from number `first` on, to the chart's first `count`
    /// rows.
    static void assignChannels(BarChartWidget* chart, int first, int count);

    /// The readings in memory of the series behind these charts' curves.
    static Readings readingsBehind(const QList<BarChartWidget*>& charts);

private:
    MainWidget& m_window;
};
