#pragma once

#include <QList>
#include <QSize>
#include <QStringList>
#include <QWidget>
#include <QtGlobal>

#include <functional>
#include <memory>
#include <vector>

class CCurvePlot;
class CurveDataDB;
class CurveOffsetController;
class CurveSeriesData;
class QwtPlotCurve;

namespace scnstore {

/// What is drawn of a run.
struct PictureContent
{
    QStringList curves; ///< By their names; those of the first rows of a chart.
    qint64 start = 0;   ///< Ms since the epoch.
    qint64 end = 0;
};

/// A chart of a stored run as a picture: the plot with its tags, the values of its grid lines, and a legend
/// below instead of the table of channels. The store outlives it.
class ChartPicture : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChartPicture)

public:
    /// Curves that a chart has rows for.
    static int mostCurves();

    ChartPicture(CurveDataDB& store, const PictureContent& content, const QSize& size);
    ~ChartPicture() override;

    /// Whether the plot has its least size beside the legend.
    bool hasRoom() const;

    /// Loads what the plot shows, with events in between. False if it was given up.
    bool load(const std::function<bool()>& isGivenUp);

    /// Whether everything that was asked for could be read.
    bool isWhole() const;

    /// Whether any reading is shown.
    bool hasReadings() const;

    const CCurvePlot& plot() const { return *m_plot; }

    /// From now on the plot is painted anew each time, not from its pixels.
    void paintLines();

private:
    void addCurves(const PictureContent& content);
    void addTags();

    CurveDataDB& m_store;
    CCurvePlot* m_plot;
    CurveOffsetController* m_tags;
    std::vector<std::unique_ptr<CurveSeriesData>> m_series;
    QList<QwtPlotCurve*> m_curves;
};

} // namespace scnstore
