#pragma once

#include "app/mainwidget.h"
#include "state/globals.h"
#include "widgets/imagebutton.h"
#include "widgets/timepicker.h"
#include "windowbench.h"

#include <QDateTime>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QPushButton>

/// A window with two channels whose scans start directly, without a store.
struct ScanBench : WindowBench
{
    ScanBench()
    {
        instrument().putModule(2, QStringLiteral("SCN4005A"));
        instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#16(@201)"));
    }
    ~ScanBench() { g_scanRunning = false; }
    ScanBench(const ScanBench&) = delete;
    ScanBench& operator=(const ScanBench&) = delete;

    /// The window with a scan under way.
    MainWidget& run(Acquisition acquisition = AcquisitionEnded)
    {
        MainWidget& opened = open(acquisition);
        begin();
        return opened;
    }
    void begin() const
    {
        window().show();
        window().scanFunc();
    }

    /// The same with the acquisition, whose polls of an instrument that scans find nothing.
    void runWithoutReadings()
    {
        open(AcquisitionRuns);
        instrument().setReply(QStringLiteral("DATA:POIN?"), QStringLiteral("+0"));
        instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+16"));
        begin();
    }

    /// Stops after this time instead of by hand.
    void stopAfter(int hours, int seconds, int milliseconds = 0)
    {
        button(QStringLiteral("已用时间之后:"))->setChecked(true);
        picker()->setMillisecondsVisible(true);
        picker()->setTime(0, hours, 0, seconds, milliseconds);
    }
    TimePicker* picker() const
    {
        for (TimePicker* candidate : window().findChildren<TimePicker*>()) {
            const auto* group = qobject_cast<QGroupBox*>(candidate->parentWidget());
            if (group && group->title() == QStringLiteral("停止数据记录")) {
                return candidate;
            }
        }
        return nullptr;
    }
    QStringList takeLines() { return instrument().takeLines(); }

    /// The window is idle and has recorded the end of the run.
    bool isIdle() const
    {
        const QSize size(32, 32);
        return startButton()->text() == QStringLiteral("开始") &&
               startButton()->leftIcon().pixmap(size).toImage() ==
                   QIcon(QStringLiteral(":/image/start.png")).pixmap(size).toImage() &&
               exportButton()->isEnabled() && runningLabel()->isHidden();
    }
};
