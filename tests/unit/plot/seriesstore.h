#pragma once

#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"

#include <QCoreApplication>
#include <QDir>
#include <QMap>

#include <memory>

/// Live series over the test program's own store. Registering a curve is slow, so each channel's
/// series is created once and emptied before each use.
class SeriesStore
{
    Q_DISABLE_COPY_MOVE(SeriesStore)

public:
    /// `directoryName`: the store's directory, one per test program.
    explicit SeriesStore(const QString& directoryName)
        : m_directoryName(directoryName)
    {
        directory().removeRecursively();
    }

    ~SeriesStore()
    {
        reset();
        m_series.clear();
        CurveDataDB::shutdown();
        directory().removeRecursively();
    }

    /// Puts an empty series of `channel` into g_curveSeries.
    std::shared_ptr<CurveSeriesData> add(int channel)
    {
        std::shared_ptr<CurveSeriesData>& series = m_series[channel];
        if (!series) {
            series = std::make_shared<CurveSeriesData>(QStringLiteral("%1(V)").arg(channel),
                                                       m_directoryName);
        }
        series->clear();
        g_curveSeries[channel] = series;
        return series;
    }

    /// A series held by no one else; it is not in g_curveSeries.
    std::shared_ptr<CurveSeriesData> makeUnshared(int channel) const
    {
        return std::make_shared<CurveSeriesData>(QStringLiteral("%1(V)").arg(channel),
                                                 m_directoryName);
    }

    /// Empties the scan list and the map of series.
    static void reset()
    {
        g_curveSeries.clear();
        g_scanChannels.clear();
    }

private:
    QDir directory() const
    {
        return QDir(QCoreApplication::applicationDirPath() + QLatin1Char('/') + m_directoryName);
    }

    QString m_directoryName;
    QMap<int, std::shared_ptr<CurveSeriesData>> m_series;
};
