#include "plot/viewsurroundings.h"
#include "plotsupport.h"
#include "skippedwaits.h"
#include "storage/readslice.h"
#include "support/testprogram.h"

#include <QTemporaryDir>

using namespace plotsupport;

namespace {

constexpr int kPoints = 20000;
constexpr qint64 kStepMs = 2000; // eleven hours, in three tables

const qint64 kStart = noonToday() - 3 * qint64(86400000) - 36000000;

} // namespace

/// The tables around a view are looked through before it moves there.
class TestViewSurroundings : public QObject
{
    Q_OBJECT

private slots:
    void tablesOnEitherSideAreKnown();
};

void TestViewSurroundings::tablesOnEitherSideAreKnown()
{
    const SkippedWaits waits;
    const QTemporaryDir directory;
    CurveDataDB store(directory.path());
    CurveSeriesData series(QStringLiteral("101(V)"), &store);
    QVector<QPointF> points;
    for (int i = 0; i < kPoints; ++i) {
        points.append(QPointF(static_cast<double>(kStart + kStepMs * i), i % 100));
    }
    series.addPoints(points);
    const QString path = store.dbPathForTime(kStart);
    const scn::HeldFiles files{{path, store.openDb(path)}};
    const qint64 end = kStart + kPoints * kStepMs;
    const qint64 middle = (kStart + end) / 2;
    const auto isKnown = [&] {
        scn::ReadSlice slice(QDeadlineTimer(0), 0);
        return series.lookThrough(kStart, end, files, slice) && !slice.isOver();
    };
    QVERIFY(!isKnown());
    const scn::ViewSurroundings surroundings({&series}, files, middle, middle + 1000);
    QTRY_VERIFY(!surroundings.findChild<QTimer*>()->isActive());
    QVERIFY(isKnown());
}

SCN_TEST(TestViewSurroundings, QApplication)
#include "test_viewsurroundings.moc"
