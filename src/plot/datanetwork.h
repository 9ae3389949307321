#pragma once

#include "plot/workspaceview.h"

#include <QStringList>
#include <QWidget>

class QComboBox;
class QTableWidget;

/// The data grid of the workspace: 20 rows. In each one the user picks a channel and sees its latest
/// reading with its time, and the minimum, maximum and average so far. It reads the shared series and
/// stores nothing. GUI thread.
class DataNetwork : public QWidget, public scn::WorkspaceView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DataNetwork)

public:
    explicit DataNetwork(QWidget* parent = nullptr);

    /// Offers these channels in every row and selects the first; the values shown stay. An empty list is
    /// ignored.
    void setChannelList(const QStringList& items) override;

    /// A grid holds no series: the same as setChannelList().
    void rebuildChannelList(const QStringList& items) override;

    /// Rewrites the rows, whatever the time.
    void onNewSample(qint64 timeMs) override;

    /// Rewrites each row that has a channel.
    void refreshRows();

private slots:
    void onChannelChanged(int index);

private:
    void buildTable();
    void buildRow(int row);
    QComboBox* comboOfRow(int row) const;
    void refreshRow(int row);
    void writeCell(int row, int column, const QString& text);

    QTableWidget* m_table;
};
