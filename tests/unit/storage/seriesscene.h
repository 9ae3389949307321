#pragma once

#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"

#include <QPointF>
#include <QTemporaryDir>
#include <QVector>

#include <memory>

namespace seriesscene {

/// Start of the store's today: what is written from here on goes to the current file.
qint64 today();

/// Name of the curve that is made as the `number`th.
QString curveName(int number);

/// `size` points, `step` ms apart, of values that rise from -100.
QVector<QPointF> ramp(qint64 start, int size, qint64 step = 100);

/// The points that a series has on display.
QVector<QPointF> shownBy(const CurveSeriesData& series);

/// The points, each `offset` higher.
QVector<QPointF> shifted(QVector<QPointF> points, double offset);

} // namespace seriesscene

/// A store in the afternoon of 5 March 2026, and series of it. One at a time.
class SeriesScene
{
public:
    /// Points that a series keeps in memory.
    static constexpr int kLimit = 15000;

    SeriesScene();
    ~SeriesScene();
    SeriesScene(const SeriesScene&) = delete;
    SeriesScene& operator=(const SeriesScene&) = delete;

    /// The series of another curve.
    std::unique_ptr<CurveSeriesData> makeSeries();

    /// How many series were made.
    int made() const { return m_made; }

    CurveDataDB& store() { return *m_store; }

    QString todayPath() const;

    /// What today's file has of a curve, in the order of writing.
    QVector<QPointF> storedPoints(int curveId) const;

private:
    const SkippedWaits m_waits;
    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
    int m_made = 0;
};
