#pragma once

#include <QMap>
#include <QString>

#include <functional>
#include <memory>

class CurveSeriesData;

/// Creates the series of a scan list and registers their curves with the store of `directoryName`.
/// `channels` maps channel numbers to units; a channel without a unit gets no series. A curve's
/// name is "101(Vdc)": number and unit.
///
/// A curve new to the store costs 200 ms, so this runs on a helper thread, and the result is handed
/// to the GUI thread complete. The series of a curve that could not be registered stays empty until
/// it is. `isWanted` is called before each curve, so the end of the program does not wait for all
/// of them: once it is false no further series is created.
QMap<int, std::shared_ptr<CurveSeriesData>>
buildCurveSeries(const QMap<int, QString>& channels, const QString& directoryName,
                 const std::function<bool()>& isWanted = {});
