#pragma once

#include <QMap>
#include <QString>

#include <functional>
#include <memory>

class CurveSeriesData;

/// Makes the series of a scan list and registers their curves with the store of `directoryName`.
/// `channels` maps channel numbers to units; a channel without a unit gets no series. A curve's name
/// is "101(V)": number and unit.
///
/// A curve that is new to the store costs 200 ms, so this runs on a helper thread; the result is
/// handed to the GUI thread whole. A curve that could not be registered has a series that stays
/// empty until it is. `isWanted` is asked before each curve, so that the end of the program need not wait for
/// them all: once it is false no further series is made.
QMap<int, std::shared_ptr<CurveSeriesData>>
buildCurveSeries(const QMap<int, QString>& channels, const QString& directoryName,
                 const std::function<bool()>& isWanted = {});
