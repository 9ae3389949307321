#include "seriesscene.h"

#include "dayfilewriter.h"
#include "storage/connectionpool.h"
#include "storage/storeclock.h"

#include <QDeadlineTimer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>

namespace {

constexpr int kCurves = 60;

qint64 presentTime()
{
    static const qint64 time = localTime("2026-03-05 18:00:00.000");
    return time;
}

} // namespace

using seriesscene::curveName;

SeriesScene::SeriesScene()
{
    scn::setStoreClock(&presentTime);
    // Curves already in the file are registered without the pause for a new name.
    {
        DayFileWriter file(todayPath());
        for (int curveId = 1; curveId <= kCurves; ++curveId) {
            file.addCurve(curveId, curveName(curveId));
        }
    }
    m_store = std::make_unique<CurveDataDB>(m_directory.path());
}

SeriesScene::~SeriesScene()
{
    m_store.reset();
    ConnectionPool::instance().closeForExit(QDeadlineTimer(2000));
    scn::setStoreClock(nullptr);
}

qint64 seriesscene::today()
{
    static const qint64 time = localTime("2026-03-05 00:00:00.000");
    return time;
}

QString seriesscene::curveName(int number)
{
    return QStringLiteral("%1(V)").arg(1000 + number);
}

QVector<QPointF> seriesscene::ramp(qint64 start, int size, qint64 step)
{
    QVector<QPointF> points;
    for (int i = 0; i < size; ++i) {
        points.append(QPointF(static_cast<double>(start + i * step), i * 0.25 - 100.0));
    }
    return points;
}

QVector<QPointF> seriesscene::shownBy(const CurveSeriesData& series)
{
    QVector<QPointF> points;
    for (size_t i = 0; i < series.size(); ++i) {
        points.append(series.sample(i));
    }
    return points;
}

QVector<QPointF> seriesscene::shifted(QVector<QPointF> points, double offset)
{
    for (QPointF& point : points) {
        point.ry() += offset;
    }
    return points;
}

std::unique_ptr<CurveSeriesData> SeriesScene::makeSeries()
{
    ++m_made;
    Q_ASSERT(m_made <= kCurves);
    return std::make_unique<CurveSeriesData>(curveName(m_made), m_store.get());
}

QString SeriesScene::todayPath() const
{
    return m_directory.filePath(QStringLiteral("20260305.db"));
}

QVector<QPointF> SeriesScene::storedPoints(int curveId) const
{
    QVector<QPointF> points;
    const QString connection = QStringLiteral("look");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(todayPath());
        if (!db.open()) {
            qFatal("cannot look into the day file");
        }
        QStringList tables;
        QSqlQuery query(db);
        query.prepare(QStringLiteral(
            "SELECT table_name FROM batch_metadata WHERE curve_id = ? ORDER BY batch_start"));
        query.addBindValue(curveId);
        query.exec();
        while (query.next()) {
            tables.append(query.value(0).toString());
        }
        for (const QString& table : qAsConst(tables)) {
            query.exec(QStringLiteral("SELECT timestamp, value FROM %1 ORDER BY id").arg(table));
            while (query.next()) {
                points.append(QPointF(query.value(0).toDouble(), query.value(1).toDouble()));
            }
        }
    }
    QSqlDatabase::removeDatabase(connection);
    return points;
}
