#pragma once

#include <QCoreApplication>
#include <QList>
#include <QMap>
#include <QStringList>

class ColorSelectButton;
class QComboBox;
class QDoubleSpinBox;
class QObject;
class QTableWidget;
class QWidget;

namespace scn {

/// The table below a chart: 40 rows in which the user gives each curve a channel, a colour and an
/// offset. It builds the controls and looks them up; the chart acts on changes. GUI thread.
class CurveTable
{
    Q_DECLARE_TR_FUNCTIONS(BarChartWidget)

public:
    static constexpr int kRowCount = 40;

    /// `parent` owns the widgets.
    explicit CurveTable(QWidget* parent);

    QTableWidget* widget() const { return m_table; }

    /// Shows the table. It takes its room from the start, but its 320 widgets are styled here, which takes longer
    /// than to draw the chart above it.
    void appear();

    int rowCount() const;

    /// Row of a control; -1 for any other object.
    int rowOf(QObject* control) const { return m_controlRows.value(control, -1); }

    // A row's controls; null if there is no such row.
    QComboBox* channelBox(int row) const;
    QDoubleSpinBox* offsetBox(int row) const;
    ColorSelectButton* colorButton(int row) const;

    /// Offers these channels in every row, selects the first and resets the offset. No signals.
    void setChannelList(const QStringList& items);

    /// The channel selected in a row; -1 for none or a text without a channel.
    int selectedChannel(int row) const;

    /// The selected channels in row order.
    QList<int> selectedChannels() const;

    /// Enables a row's controls and shows the offset. No signals.
    void enableRow(int row, double offset, const QString& unit);

    /// Disables a row's offset box and shows 0 in it. No signals.
    void resetOffset(int row);

private:
    void styleHeader();
    void buildRow(int row);
    void putIntoCell(int row, int column, QWidget* widget);
    QWidget* buildColorCell(int row);
    QWidget* buildUnitsPerDivCell();
    QWidget* buildOffsetCell(int row);

    QTableWidget* m_table;
    QMap<QObject*, int> m_controlRows;
    bool m_hasAppeared = false;
};

} // namespace scn
