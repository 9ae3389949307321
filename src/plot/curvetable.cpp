#include "plot/curvetable.h"

#include "common/channelnumber.h"
#include "plot/colorselectbutton.h"
#include "plot/viewheader.h"
#include "widgets/lazycombobox.h"
#include "widgets/wheelguard.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QTableWidget>

namespace scn {

namespace {

enum CurveTableColumn {
    CurveNumberColumn,
    CurveColorColumn,
    CurveChannelColumn,
    CurveAxisColumn,
    CurveUnitsPerDivColumn,
    CurveOffsetColumn,
    CurveColumnCount
};

constexpr int kNumberColumnWidth = 50;
constexpr int kColorColumnWidth = 80;
constexpr int kAxisColumnWidth = 100;
constexpr int kColorCellMargin = 2;

constexpr double kOffsetLimit = 1000.0;
constexpr int kOffsetDecimals = 5;

} // namespace

CurveTable::CurveTable(QWidget* parent)
    : m_table(new QTableWidget(kRowCount, CurveColumnCount, parent))
{
    QSizePolicy policy = m_table->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_table->setSizePolicy(policy);
    m_table->hide();
    m_table->ensurePolished();
    m_table->setHorizontalHeaderLabels(
        {QString(), tr("颜色"), tr("通道"), tr("图表 Y轴"), tr("单位/Div"), tr("偏移量")});
    m_table->verticalHeader()->setVisible(false);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    styleHeader();
    for (int row = 0; row < kRowCount; ++row) {
        buildRow(row);
    }
    // They have asked to be styled in the next turn of the event loop, before anything is drawn.
    const QList<QWidget*> widgets = m_table->viewport()->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        QCoreApplication::removePostedEvents(widget, QEvent::PolishRequest);
    }
}

void CurveTable::appear()
{
    if (m_hasAppeared) {
        return;
    }
    m_hasAppeared = true;
    QSizePolicy policy = m_table->sizePolicy();
    policy.setRetainSizeWhenHidden(false);
    m_table->setSizePolicy(policy);
    m_table->show();
}

int CurveTable::rowCount() const
{
    return m_table->rowCount();
}

QComboBox* CurveTable::channelBox(int row) const
{
    return qobject_cast<QComboBox*>(m_table->cellWidget(row, CurveChannelColumn));
}

QDoubleSpinBox* CurveTable::offsetBox(int row) const
{
    const QWidget* holder = m_table->cellWidget(row, CurveOffsetColumn);
    return holder ? holder->findChild<QDoubleSpinBox*>() : nullptr;
}

ColorSelectButton* CurveTable::colorButton(int row) const
{
    const QWidget* holder = m_table->cellWidget(row, CurveColorColumn);
    return holder ? holder->findChild<ColorSelectButton*>() : nullptr;
}

void CurveTable::setChannelList(const QStringList& items)
{
    for (int row = 0; row < rowCount(); ++row) {
        if (QComboBox* box = channelBox(row)) {
            const QSignalBlocker blocker(box);
            box->clear();
            box->insertItems(0, items);
            resetOffset(row);
        }
    }
}

int CurveTable::selectedChannel(int row) const
{
    const QComboBox* box = channelBox(row);
    if (!box || box->currentIndex() <= 0) {
        return -1;
    }
    bool ok = false;
    const int channel = labelOfChannelText(box->currentText(), &ok);
    return ok ? channel : -1;
}

QList<int> CurveTable::selectedChannels() const
{
    QList<int> channels;
    for (int row = 0; row < rowCount(); ++row) {
        const int channel = selectedChannel(row);
        if (channel >= 0) {
            channels.append(channel);
        }
    }
    return channels;
}

void CurveTable::enableRow(int row, double offset, const QString& unit)
{
    if (QWidget* unitsPerDivBox = m_table->cellWidget(row, CurveUnitsPerDivColumn)) {
        unitsPerDivBox->setEnabled(true);
    }
    QDoubleSpinBox* box = offsetBox(row);
    if (!box) {
        return;
    }
    const QSignalBlocker blocker(box);
    box->setEnabled(true);
    box->setValue(offset);
    box->setSuffix(QStringLiteral(" %1").arg(unit));
}

void CurveTable::resetOffset(int row)
{
    QDoubleSpinBox* box = offsetBox(row);
    if (!box) {
        return;
    }
    const QSignalBlocker blocker(box);
    box->setEnabled(false);
    // The plot keeps the curve's offset and applies it when the channel is selected again.
    box->setValue(0.0);
}

void CurveTable::styleHeader()
{
    QHeaderView* header = m_table->horizontalHeader();
    dressHeader(header);
    m_table->setColumnWidth(CurveNumberColumn, kNumberColumnWidth);
    m_table->setColumnWidth(CurveColorColumn, kColorColumnWidth);
    m_table->setColumnWidth(CurveAxisColumn, kAxisColumnWidth);
    for (const int column : {CurveChannelColumn, CurveUnitsPerDivColumn, CurveOffsetColumn}) {
        header->setSectionResizeMode(column, QHeaderView::Stretch);
    }
}

void CurveTable::buildRow(int row)
{
    auto* number = new QTableWidgetItem(QString::number(row + 1));
    number->setTextAlignment(Qt::AlignCenter);
    m_table->setItem(row, CurveNumberColumn, number);

    putIntoCell(row, CurveColorColumn, buildColorCell(row));

    auto* channelBox = new LazyComboBox(m_table->viewport());
    channelBox->addItem(tr("无"));
    WheelGuard::install(channelBox);
    m_controlRows[channelBox] = row;
    putIntoCell(row, CurveChannelColumn, channelBox);

    auto* axisLabel = new QLabel(QStringLiteral("---"), m_table->viewport());
    axisLabel->setAlignment(Qt::AlignCenter);
    putIntoCell(row, CurveAxisColumn, axisLabel);

    putIntoCell(row, CurveUnitsPerDivColumn, buildUnitsPerDivCell());
    putIntoCell(row, CurveOffsetColumn, buildOffsetCell(row));
}

/// The table shows what it is given, and a widget that is shown is styled at once. One that counts as shown is
/// left alone, and is styled when the table appears.
void CurveTable::putIntoCell(int row, int column, QWidget* widget)
{
    widget->setAttribute(Qt::WA_WState_ExplicitShowHide);
    widget->setAttribute(Qt::WA_WState_Hidden, false);
    m_table->setCellWidget(row, column, widget);
}

QWidget* CurveTable::buildColorCell(int row)
{
    auto* holder = new QWidget(m_table->viewport());
    auto* layout = new QHBoxLayout(holder);
    layout->setContentsMargins(kColorCellMargin, kColorCellMargin, kColorCellMargin,
                               kColorCellMargin);
    layout->setAlignment(Qt::AlignCenter);
    auto* button = new ColorSelectButton(holder);
    layout->addWidget(button);
    m_controlRows[button] = row;
    return holder;
}

QWidget* CurveTable::buildUnitsPerDivCell()
{
    auto* box = new LazyComboBox(m_table->viewport());
    box->addItems(
        {QStringLiteral("1/"), QStringLiteral("2/"), QStringLiteral("5/"), QStringLiteral("10/")});
    box->setEnabled(false);
    WheelGuard::install(box);
    return box;
}

QWidget* CurveTable::buildOffsetCell(int row)
{
    auto* holder = new QWidget(m_table->viewport());
    auto* layout = new QHBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* box = new QDoubleSpinBox(holder);
    box->setRange(-kOffsetLimit, kOffsetLimit);
    box->setDecimals(kOffsetDecimals);
    box->setValue(0.0);
    box->setSuffix(QStringLiteral(" Vdc"));
    box->setEnabled(false);
    WheelGuard::install(box);
    layout->addWidget(box);
    m_controlRows[box] = row;
    return holder;
}

} // namespace scn
