#include "storage/curveseriesbuilder.h"

#include "common/channelnumber.h"
#include "storage/curveseriesdata.h"

QMap<int, std::shared_ptr<CurveSeriesData>> buildCurveSeries(const QMap<int, QString>& channels,
                                                             const QString& directoryName,
                                                             const std::function<bool()>& isWanted)
{
    QMap<int, std::shared_ptr<CurveSeriesData>> series;
    for (auto channel = channels.cbegin(); channel != channels.cend(); ++channel) {
        if (isWanted && !isWanted()) {
            break;
        }
        if (channel.value().isEmpty()) {
            continue;
        }
        const QString curveName = scn::channelText(channel.key(), channel.value());
        series.insert(channel.key(), std::make_shared<CurveSeriesData>(curveName, directoryName));
    }
    return series;
}
