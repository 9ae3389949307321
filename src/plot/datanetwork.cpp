#include "plot/datanetwork.h"

#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "plot/viewheader.h"
#include "state/globals.h"
#include "storage/curveseriesdata.h"
#include "widgets/lazycombobox.h"
#include "widgets/wheelguard.h"

#include <QComboBox>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QSizeGrip>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {
constexpr int kRowCount = 20;
constexpr int kValueDecimals = 5;
constexpr int kRowPadding = 6;
constexpr int kTextPixels = 11; ///< a date and a channel then fit the columns of a new window

enum GridColumn {
    GridNumberColumn,
    GridChannelColumn,
    GridReadingColumn,
    GridTimeColumn,
    GridMinimumColumn,
    GridMaximumColumn,
    GridAverageColumn,
    GridColumnCount
};

QString noChannel()
{
    return DataNetwork::tr("无");
}

QString valueText(double value)
{
    return QString::number(value, 'f', kValueDecimals);
}
} // namespace

DataNetwork::DataNetwork(QWidget* parent)
    : QWidget(parent)
    , m_table(new QTableWidget(this))
{
    assertGuiThread();
    buildTable();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_table);
    layout->addWidget(new QSizeGrip(this), 0, Qt::AlignBottom | Qt::AlignRight);
}

void DataNetwork::setChannelList(const QStringList& items)
{
    assertGuiThread();
    if (items.isEmpty()) {
        return;
    }
    for (int row = 0; row < m_table->rowCount(); ++row) {
        if (QComboBox* combo = comboOfRow(row)) {
            const QSignalBlocker blocker(combo);
            combo->clear();
            combo->insertItems(0, items);
        }
    }
}

void DataNetwork::rebuildChannelList(const QStringList& items)
{
    setChannelList(items);
}

void DataNetwork::onNewSample(qint64 timeMs)
{
    Q_UNUSED(timeMs)
    refreshRows();
}

void DataNetwork::refreshRows()
{
    assertGuiThread();
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const QComboBox* combo = comboOfRow(row);
        if (combo && combo->currentIndex() > 0) {
            refreshRow(row);
        }
    }
}

void DataNetwork::onChannelChanged(int index)
{
    assertGuiThread();
    const auto* combo = qobject_cast<QComboBox*>(sender());
    if (index < 0 || !combo) {
        return;
    }
    for (int row = 0; row < m_table->rowCount(); ++row) {
        if (m_table->cellWidget(row, GridChannelColumn) == combo) {
            refreshRow(row);
            return;
        }
    }
}

void DataNetwork::buildTable()
{
    QFont font = m_table->font();
    font.setPixelSize(kTextPixels);
    m_table->setFont(font);
    m_table->setRowCount(kRowCount);
    m_table->setColumnCount(GridColumnCount);
    m_table->setHorizontalHeaderLabels(
        {QString(), tr("通道"), tr("读数"), tr("时间"), tr("最小值"), tr("最大值"), tr("平均值")});
    QHeaderView* const header = m_table->horizontalHeader();
    scn::dressHeader(header);
    header->setSectionResizeMode(QHeaderView::Stretch);
    m_table->verticalHeader()->setVisible(false);
    // A narrow column wraps the time. Self-sizing rows would be measured for every batch, which takes
    // longer than writing them.
    m_table->verticalHeader()->setDefaultSectionSize(2 * m_table->fontMetrics().lineSpacing() +
                                                     kRowPadding);
    for (int row = 0; row < kRowCount; ++row) {
        buildRow(row);
    }
}

void DataNetwork::buildRow(int row)
{
    auto* number = new QTableWidgetItem(QString::number(row + 1));
    number->setFlags(number->flags() & ~Qt::ItemIsEditable);
    m_table->setItem(row, GridNumberColumn, number);

    auto* combo = new scn::LazyComboBox(m_table->viewport());
    combo->addItem(noChannel());
    scn::WheelGuard::install(combo);
    connect(combo, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &DataNetwork::onChannelChanged);
    // A choice by hand counts even if it changes nothing: after a new list the box shows "none" beside
    // old values.
    connect(combo, qOverload<int>(&QComboBox::activated), this, &DataNetwork::onChannelChanged);
    m_table->setCellWidget(row, GridChannelColumn, combo);

    for (int column = GridReadingColumn; column < GridColumnCount; ++column) {
        m_table->setItem(row, column, new QTableWidgetItem(QString()));
    }
}

QComboBox* DataNetwork::comboOfRow(int row) const
{
    return qobject_cast<QComboBox*>(m_table->cellWidget(row, GridChannelColumn));
}

void DataNetwork::refreshRow(int row)
{
    const QComboBox* combo = comboOfRow(row);
    if (!combo) {
        return;
    }
    const QString text = combo->currentText();
    if (text == noChannel()) {
        for (int column = GridReadingColumn; column < GridColumnCount; ++column) {
            writeCell(row, column, QString());
        }
        return;
    }
    const int channel = scn::labelOfChannelText(text);
    const std::shared_ptr<CurveSeriesData> series = g_curveSeries.value(channel);
    if (!series) {
        return;
    }
    writeCell(row, GridReadingColumn, valueText(series->lastValue()));
    writeCell(row, GridTimeColumn, series->lastTimeText());
    writeCell(row, GridMinimumColumn, valueText(series->minimum()));
    writeCell(row, GridMaximumColumn, valueText(series->maximum()));
    writeCell(row, GridAverageColumn, valueText(series->average()));
}

void DataNetwork::writeCell(int row, int column, const QString& text)
{
    if (QTableWidgetItem* item = m_table->item(row, column)) {
        item->setData(Qt::EditRole, text);
    }
}
