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
/// offset. It builds the controls and finds them again; what a change does is the chart's. GUI thread.
class CurveTable
{
    Q_DECLARE_TR_FUNCTIONS(BarChartWidget)

public:
    /// The widgets belong to `parent`.
    explicit CurveTable(QWidget* parent);

    QTableWidget* widget() const { return m_table; }
    int rowCount() const;

    /// Row of a control; -1 for an object that is none.
    int rowOf(QObject* control) const { return m_controlRows.value(control, -1); }

    // The controls of a row; null for a row that does not exist.
    QComboBox* channelBox(int row) const;
    QDoubleSpinBox* offsetBox(int row) const;
    ColorSelectButton* colorButton(int row) const;

    /// Offers these channels in every row, selects the first and resets the offset. Tells nobody.
    void setChannelList(const QStringList& items);

    /// Channel that a row has selected; -1 for none and for a text without a channel.
    int selectedChannel(int row) const;

    /// The selected channels in the order of the rows.
    QList<int> selectedChannels() const;

    /// Opens a row's controls to the user and shows the offset. Tells nobody.
    void enableRow(int row, double offset, const QString& unit);

    /// Closes a row's offset box and shows 0 in it. Tells nobody.
    void resetOffset(int row);

private:
    void styleHeader();
    void buildRow(int row);
    QWidget* buildColorCell(int row);
    QWidget* buildUnitsPerDivCell();
    QWidget* buildOffsetCell(int row);

    QTableWidget* m_table;
    QMap<QObject*, int> m_controlRows;
};

} // namespace scn
