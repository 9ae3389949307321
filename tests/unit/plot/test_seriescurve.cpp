#include "plot/seriescurve.h"
#include "support/testprogram.h"
#include "unit/storage/randomcases.h"

#include <QImage>
#include <QPainter>
#include <QPicture>
#include <QRandomGenerator>
#include <QtTest>
#include <qwt_painter.h>
#include <qwt_plot_curve.h>
#include <qwt_scale_map.h>

#include <cmath>
#include <functional>

namespace {

constexpr int kWidth = 120;
constexpr int kHeight = 80;

QwtScaleMap scaleMap(double s1, double s2, double p1, double p2)
{
    QwtScaleMap map;
    map.setScaleInterval(s1, s2);
    map.setPaintInterval(p1, p2);
    return map;
}

struct View
{
    double left = 0.0;
    double right = 1000.0;
    double bottom = 0.0;
    double top = 100.0;
};

/// Number of pixels drawn on.
int drawnPixels(const QImage& image)
{
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            drawn += image.pixelColor(x, y) == QColor(Qt::white) ? 0 : 1;
        }
    }
    return drawn;
}

void paint(QPainter& painter, const QwtPlotCurve& curve, const View& view)
{
    const QRect area(0, 0, kWidth, kHeight);
    painter.setClipRect(area);
    curve.drawSeries(&painter, scaleMap(view.left, view.right, 0.0, kWidth - 1.0),
                     scaleMap(view.bottom, view.top, kHeight - 1.0, 0.0), QRectF(area), 0, -1);
}

/// Sets a painter up.
using SetUp = std::function<void(QPainter&)>;

/// The picture of a curve on a screen with `ratio` pixels for each.
QImage painted(const QwtPlotCurve& curve, const View& view, const SetUp& setUp = {}, int ratio = 1)
{
    QImage image(kWidth * ratio, kHeight * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    QPainter painter(&image);
    if (setUp) {
        setUp(painter);
    }
    paint(painter, curve, view);
    return image;
}

/// What is painted on something that is no raster of pixels.
QByteArray recorded(const QwtPlotCurve& curve)
{
    QPicture picture;
    QPainter painter(&picture);
    paint(painter, curve, View());
    painter.end();
    return QByteArray(picture.data(), static_cast<int>(picture.size()));
}

/// The curve of Qwt and ours with the same samples.
struct TwoCurves
{
    TwoCurves(const QPen& pen, const QVector<QPointF>& samples)
    {
        for (QwtPlotCurve* curve : {&qwt, static_cast<QwtPlotCurve*>(&quick)}) {
            curve->setPen(pen);
            curve->setSamples(samples);
        }
    }

    QwtPlotCurve qwt;
    scn::SeriesCurve quick;
};

/// Up and down within each column.
QVector<QPointF> oscillation()
{
    QVector<QPointF> samples;
    for (int i = 0; i < 2000; ++i) {
        samples.append(QPointF(0.5 * i, 50.0 + 40.0 * std::sin(0.7 * i)));
    }
    return samples;
}

QPen cosmeticPen(double width)
{
    QPen pen(Qt::red, width);
    pen.setCosmetic(true);
    return pen;
}

QPen flatPen(double width)
{
    return QPen(Qt::red, width, Qt::SolidLine, Qt::FlatCap);
}

QVector<QPointF> randomSamples(QRandomGenerator& random)
{
    QVector<QPointF> samples;
    const int count = random.bounded(2000);
    const bool inOrder = random.bounded(4) != 0;
    const double jump = std::pow(10.0, random.bounded(3));
    double y = 50.0;
    for (int i = 0; i < count; ++i) {
        y += jump * (random.generateDouble() - 0.5);
        if (random.bounded(200) == 0) {
            y = random.bounded(100.0);
        }
        const double overload = random.bounded(500) == 0 ? 9.9e37 : y;
        const double x = inOrder ? 1000.0 * i / count : random.bounded(1000.0);
        samples.append(QPointF(x, overload));
    }
    return samples;
}

/// Many samples in each column, a few pixels apart: the lines that are drawn as spans.
QVector<QPointF> denseSamples(QRandomGenerator& random)
{
    constexpr double kPixel = 100.0 / (kHeight - 1);
    QVector<QPointF> samples;
    const int count = 200 + random.bounded(4000);
    const int reach = 1 + random.bounded(kHeight / 2);
    const int still = random.bounded(4);
    int level = random.bounded(kHeight);
    for (int i = 0; i < count; ++i) {
        if (random.bounded(4) >= still) {
            level += random.bounded(3) == 0 ? random.bounded(3) - 1
                                            : random.bounded(2 * reach + 1) - reach;
        }
        // Some lie outside.
        level = qBound(-5, level, kHeight + 5);
        samples.append(QPointF(1000.0 * i / count, level * kPixel));
    }
    return samples;
}

} // namespace

Q_DECLARE_METATYPE(SetUp)

/// The curve against that of Qwt, pixel by pixel.
class TestSeriesCurve : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QwtPainter::setPolylineSplitting(true); }

    void paintsTheSamePixels_data();
    void paintsTheSamePixels();
    void paintsTheSamePixelsOfRandomCurves_data();
    void paintsTheSamePixelsOfRandomCurves();
    void leavesOtherLinesToTheLibrary_data();
    void leavesOtherLinesToTheLibrary();
    void paintsTheSamePixelsOnAFineScreen_data();
    void paintsTheSamePixelsOnAFineScreen();
    void paintsTheSamePixelsOfUnsplitLines();
    void leavesWhatIsNoRasterToTheLibrary();
    void emptyCurvePaintsNothing();
};

void TestSeriesCurve::paintsTheSamePixels_data()
{
    QTest::addColumn<QVector<QPointF>>("samples");
    using Samples = QVector<QPointF>;
    QTest::newRow("one sample") << Samples{{500.0, 50.0}};
    QTest::newRow("one pixel") << Samples{{500.0, 50.0}, {500.1, 50.1}};
    QTest::newRow("one column") << Samples{
        {500.0, 50.0}, {500.1, 20.0}, {500.2, 80.0}, {500.3, 60.0}};
    QTest::newRow("lowest first") << Samples{{100.0, 10.0}, {100.1, 90.0}, {500.0, 50.0}};
    QTest::newRow("highest first") << Samples{{100.0, 90.0}, {100.1, 10.0}, {500.0, 50.0}};
    QTest::newRow("backwards") << Samples{
        {900.0, 90.0}, {100.0, 10.0}, {100.1, 40.0}, {500.0, 50.0}};
    QTest::newRow("flat") << Samples{{100.0, 50.0}, {500.0, 50.0}, {900.0, 50.0}};
    QTest::newRow("on the edges") << Samples{
        {0.0, 0.0}, {1000.0, 100.0}, {0.0, 100.0}, {-8.0, 50.0}};
    QTest::newRow("just outside") << Samples{
        {-9.0, 50.0}, {500.0, -1.5}, {1009.0, 101.5}, {400.0, 50.0}};
    QTest::newRow("out to the left") << Samples{{-9e15, 90.0}, {100.0, 10.0}, {500.0, 50.0}};
    QTest::newRow("overload") << Samples{
        {100.0, 10.0}, {101.0, 9.9e37}, {102.0, 20.0}, {500.0, -9.9e37}};
    QTest::newRow("overload alone in a column")
        << Samples{{100.0, 10.0}, {300.0, 9.9e37}, {500.0, 20.0}};
}

void TestSeriesCurve::paintsTheSamePixels()
{
    QFETCH(QVector<QPointF>, samples);
    const TwoCurves curves(QPen(Qt::red, 0.0), samples);
    QCOMPARE(painted(curves.quick, View()), painted(curves.qwt, View()));
}

void TestSeriesCurve::paintsTheSamePixelsOfRandomCurves_data()
{
    QTest::addColumn<bool>("dense");
    QTest::newRow("sparse") << false;
    QTest::newRow("dense") << true;
}

void TestSeriesCurve::paintsTheSamePixelsOfRandomCurves()
{
    QFETCH(bool, dense);
    QRandomGenerator random(randomSeed());
    const int cases = randomCaseCount();
    qint64 drawn = 0;
    for (int i = 0; i < cases; ++i) {
        const QVector<QPointF> samples = dense ? denseSamples(random) : randomSamples(random);
        const TwoCurves curves(QPen(Qt::red, i % 2 == 0 ? 0.0 : 1.0), samples);
        View view;
        if (i % 3 != 0) {
            view.left = random.bounded(900.0);
            view.right = view.left + std::pow(10.0, random.bounded(6.0) - 3.0);
            view.bottom = random.bounded(80.0);
            view.top = view.bottom + std::pow(10.0, random.bounded(5.0) - 3.0);
        }
        const QImage expected = painted(curves.qwt, view);
        drawn += drawnPixels(expected);
        QVERIFY2(painted(curves.quick, view) == expected,
                 qPrintable(QStringLiteral("curve %1").arg(i)));
    }
    QVERIFY(drawn > 20 * cases);
}

void TestSeriesCurve::leavesOtherLinesToTheLibrary_data()
{
    QTest::addColumn<QPen>("pen");
    QTest::addColumn<QBrush>("brush");
    QTest::addColumn<SetUp>("setUp");
    const QPen thin(Qt::red, 0.0);
    const SetUp plain;
    const SetUp antialiased = [](QPainter& painter) {
        painter.setRenderHint(QPainter::Antialiasing);
    };
    const SetUp halfOpaque = [](QPainter& painter) { painter.setOpacity(0.5); };
    const SetUp difference = [](QPainter& painter) {
        painter.setCompositionMode(QPainter::CompositionMode_Difference);
    };
    QTest::newRow("thick") << QPen(Qt::red, 3.0) << QBrush() << plain;
    QTest::newRow("thick whatever the scale") << cosmeticPen(3.0) << QBrush() << plain;
    QTest::newRow("dashed") << QPen(Qt::red, 0.0, Qt::DashLine) << QBrush() << plain;
    QTest::newRow("flat ends") << flatPen(1.0) << QBrush() << plain;
    QTest::newRow("translucent") << QPen(QColor(255, 0, 0, 90), 0.0) << QBrush() << plain;
    QTest::newRow("filled") << thin << QBrush(Qt::blue) << plain;
    QTest::newRow("antialiased") << thin << QBrush() << antialiased;
    QTest::newRow("translucent painter") << thin << QBrush() << halfOpaque;
    QTest::newRow("composed") << thin << QBrush() << difference;
}

void TestSeriesCurve::leavesOtherLinesToTheLibrary()
{
    QFETCH(QPen, pen);
    QFETCH(QBrush, brush);
    QFETCH(SetUp, setUp);
    TwoCurves curves(pen, oscillation());
    curves.qwt.setBrush(brush);
    curves.quick.setBrush(brush);
    QCOMPARE(painted(curves.quick, View(), setUp), painted(curves.qwt, View(), setUp));
}

/// On a fine screen a line of width 1 is more than a pixel wide, one of width 0 or a cosmetic one is not.
void TestSeriesCurve::paintsTheSamePixelsOnAFineScreen_data()
{
    QTest::addColumn<QPen>("pen");
    QTest::newRow("width 0") << QPen(Qt::red, 0.0);
    QTest::newRow("width 1") << QPen(Qt::red, 1.0);
    QTest::newRow("width 1 whatever the scale") << cosmeticPen(1.0);
}

void TestSeriesCurve::paintsTheSamePixelsOnAFineScreen()
{
    constexpr int kRatio = 2;
    QFETCH(QPen, pen);
    QRandomGenerator random(randomSeed());
    for (int i = 0; i < 20; ++i) {
        const TwoCurves curves(pen, denseSamples(random));
        QCOMPARE(painted(curves.quick, View(), {}, kRatio),
                 painted(curves.qwt, View(), {}, kRatio));
    }
}

void TestSeriesCurve::paintsTheSamePixelsOfUnsplitLines()
{
    QwtPainter::setPolylineSplitting(false);
    QRandomGenerator random(randomSeed());
    bool isSame = true;
    for (int i = 0; i < 20; ++i) {
        const TwoCurves curves(QPen(Qt::red, 0.0), denseSamples(random));
        isSame = isSame && painted(curves.quick, View()) == painted(curves.qwt, View());
    }
    QwtPainter::setPolylineSplitting(true);
    QVERIFY(isSame);
}

void TestSeriesCurve::leavesWhatIsNoRasterToTheLibrary()
{
    const TwoCurves curves(QPen(Qt::red, 0.0), oscillation());
    QCOMPARE(recorded(curves.quick), recorded(curves.qwt));
}

void TestSeriesCurve::emptyCurvePaintsNothing()
{
    scn::SeriesCurve quick;
    quick.setPen(Qt::red, 0.0);
    QCOMPARE(drawnPixels(painted(quick, View())), 0);
}

SCN_TEST(TestSeriesCurve, QApplication)
#include "test_seriescurve.moc"
