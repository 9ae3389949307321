#pragma once

#include "plot/barchartwidget.h"
#include "plot/ccurveplot.h"
#include "plot/colorselectbutton.h"
#include "plot/curvelabel.h"
#include "plot/curveoffsetcontroller.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QImage>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>
#include <qwt_plot_curve.h>

inline const QStringList kChannels{QStringLiteral("无"), QStringLiteral("101(V)"),
                                   QStringLiteral("102(mA)"), QStringLiteral("103(V)")};

/// Index of a channel in kChannels.
inline int itemOf(int channel)
{
    return channel - 100;
}

/// A visible chart window that offers kChannels.
struct ChartFixture
{
    ChartFixture()
    {
        g_scanChannels = {
            {101, QStringLiteral("V")}, {102, QStringLiteral("mA")}, {103, QStringLiteral("V")}};
        chart.setChannelList(kChannels);
        chart.resize(700, 600);
        chart.show();
    }

    QTableWidget* table() const { return chart.findChild<QTableWidget*>(); }
    CCurvePlot* plot() const { return chart.findChild<CCurvePlot*>(); }
    CurveOffsetController* strip() const { return chart.findChild<CurveOffsetController*>(); }
    ColorSelectButton* button(int row) const
    {
        return table()->cellWidget(row, 1)->findChild<ColorSelectButton*>();
    }
    QComboBox* combo(int row) const
    {
        return qobject_cast<QComboBox*>(table()->cellWidget(row, 2));
    }
    QComboBox* unitsPerDiv(int row) const
    {
        return qobject_cast<QComboBox*>(table()->cellWidget(row, 4));
    }
    QDoubleSpinBox* spinBox(int row) const
    {
        return table()->cellWidget(row, 5)->findChild<QDoubleSpinBox*>();
    }
    void choose(int row, int channel) { combo(row)->setCurrentIndex(itemOf(channel)); }
    /// Moves down a row's list one channel at a time, as with the arrow keys.
    void goDown(int row, int steps) const
    {
        combo(row)->setFocus();
        for (int step = 0; step < steps; ++step) {
            QTest::keyClick(combo(row), Qt::Key_Down);
        }
    }
    void chooseNone(int row) { combo(row)->setCurrentIndex(0); }

    QList<QwtPlotCurve*> curves() const
    {
        QList<QwtPlotCurve*> found;
        for (QwtPlotItem* item : plot()->itemList(QwtPlotItem::Rtti_PlotCurve)) {
            found.append(static_cast<QwtPlotCurve*>(item));
        }
        return found;
    }
    QwtPlotCurve* curve(int channel) const
    {
        for (QwtPlotCurve* candidate : curves()) {
            if (candidate->title().text() == QString::number(channel)) {
                return candidate;
            }
        }
        return nullptr;
    }
    CurveLabel* label(int channel) const
    {
        for (CurveLabel* candidate : strip()->findChildren<CurveLabel*>()) {
            if (candidate->text() == QString::number(channel)) {
                return candidate;
            }
        }
        return nullptr;
    }
    QPushButton* buttonWithText(const QString& text) const
    {
        for (QPushButton* candidate : chart.findChildren<QPushButton*>()) {
            if (candidate->text() == text) {
                return candidate;
            }
        }
        return nullptr;
    }
    CustomComboBox* zoomBox() const { return chart.findChild<CustomComboBox*>(); }

    /// True if the canvas's backing store contains `color`.
    bool paints(const QColor& color) const
    {
        const QImage image = plot()->canvas()->grab().toImage();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) == color) {
                    return true;
                }
            }
        }
        return false;
    }

    BarChartWidget chart;
};
