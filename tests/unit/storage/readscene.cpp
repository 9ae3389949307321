#include "readscene.h"

#include "dayfilewriter.h"
#include "storage/connectionpool.h"
#include "storage/storeclock.h"

namespace {

constexpr int kCurves = 20;
constexpr int kCloseMs = 2000;

} // namespace

qint64 presentTime()
{
    static const qint64 time = localTime("2026-03-05 18:00:00.000");
    return time;
}

QString curveName(int curveId)
{
    return QStringLiteral("%1(V)").arg(100 + curveId);
}

QVector<QPointF> ramp(qint64 start, int size, qint64 step)
{
    QVector<QPointF> points;
    for (int i = 0; i < size; ++i) {
        points.append(QPointF(static_cast<double>(start + i * step), i * 0.5 - 3.0));
    }
    return points;
}

ReadScene::ReadScene()
{
    scn::setStoreClock(&presentTime);
    // Curves already in the file are registered without the pause for a new name.
    DayFileWriter file(pathOf(QStringLiteral("20260305")));
    for (int curveId = 1; curveId <= kCurves; ++curveId) {
        file.addCurve(curveId, curveName(curveId));
    }
    m_store = std::make_unique<CurveDataDB>(m_directory.path());
    for (int curveId = 1; curveId <= kCurves; ++curveId) {
        if (m_store->registerCurve(curveName(curveId)) != curveId) {
            qFatal("the curves do not have their ids");
        }
    }
}

ReadScene::~ReadScene()
{
    m_store.reset();
    ConnectionPool::instance().closeForExit(QDeadlineTimer(kCloseMs));
    scn::setStoreClock(nullptr);
}

QString ReadScene::pathOf(const QString& day) const
{
    return m_directory.filePath(day + QStringLiteral(".db"));
}

void ReadScene::letGo()
{
    m_store->flushAndDetach();
    ConnectionPool::instance().closeForExit(QDeadlineTimer(kCloseMs));
}
