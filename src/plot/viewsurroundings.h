#pragma once

#include "storage/heldfiles.h"

#include <QObject>
#include <QTimer>
#include <QVector>

class CurveSeriesData;

namespace scn {

/// Looks through the tables around a view of stored readings while nothing else happens: the next zoom or
/// drag then finds them known. Only in files that the view has open. One view at a time, that of the
/// newest object first. As an event filter of a chart it ends for good when the chart is hidden. The
/// series must outlive it. GUI thread.
class ViewSurroundings : public QObject
{
public:
    /// `start` and `end` are those of the view, in ms since the epoch.
    ViewSurroundings(QVector<CurveSeriesData*> series, HeldFiles files, qint64 start, qint64 end);
    ~ViewSurroundings() override;
    Q_DISABLE_COPY_MOVE(ViewSurroundings)

    bool eventFilter(QObject* chart, QEvent* event) override;

private:
    void lookOn();
    void stop();

    QVector<CurveSeriesData*> m_series;
    HeldFiles m_files;
    qint64 m_start;
    qint64 m_end;
    int m_next = 0; ///< The series to go on with.
    QTimer m_timer{this};
};

} // namespace scn
