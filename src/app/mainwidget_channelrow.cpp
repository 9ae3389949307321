#include "app/mainwidget.h"

#include "app/channeleditor.h"
#include "app/instrumentlink.h"
#include "common/threadassert.h"
#include "widgets/customcombobox.h"
#include "widgets/custommessagedialog.h"

#include <QDebug>
#include <QPushButton>

int MainWidget::senderChannel() const
{
    return rowWidgetChannels.value(qobject_cast<QWidget*>(sender()));
}

void MainWidget::onTitleEdited(const QString& text)
{
    assertGuiThread();
    qDebug() << "onTitleEdited"
             << "-0000-" << text;
}

void MainWidget::onMeasTypeChanged(int index)
{
    assertGuiThread();
    const auto* box = qobject_cast<CustomComboBox*>(sender());
    if (index >= 0 && box) {
        m_editor->changeFunction(senderChannel(), box->currentText());
    }
}

void MainWidget::onRangeTypeChanged(int index)
{
    m_editor->changeRange(senderChannel(), index);
}

void MainWidget::onResTypeChanged(int index)
{
    m_editor->changeTemperatureUnit(senderChannel(), index);
}

void MainWidget::onZoomStateChanged(bool state)
{
    m_editor->changeScaling(senderChannel(), state);
}

void MainWidget::onFuncTypeChanged(int index)
{
    m_editor->changeScaleFunction(senderChannel(), index);
}

void MainWidget::onModificationEdited(const QString& text)
{
    refuseUnless(m_editor->changeGain(senderChannel(), text));
}

void MainWidget::onLowerEdited(const QString& text)
{
    refuseUnless(m_editor->changeOffset(senderChannel(), text));
}

void MainWidget::refuseUnless(bool isNumber)
{
    if (!isNumber) {
        showMessage(tr("非法字符请重新输入"), CustomMessageDialog::Error);
    }
}

void MainWidget::onUnitChanged(int index)
{
    m_editor->changeUnit(senderChannel(), index);
}

void MainWidget::onMoreButton1Clicked()
{
    assertGuiThread();
    m_editor->openFunctionPanel(senderChannel(), qobject_cast<QPushButton*>(sender()));
}

void MainWidget::onMoreButton2Clicked()
{
    assertGuiThread();
    m_editor->openScalePanel(senderChannel(), qobject_cast<QPushButton*>(sender()));
}

void MainWidget::recvAdvancedSettingChanged(int channelNum)
{
    m_link->readChannel(channelNum);
}
