#include "dayfilewriter.h"
#include "plot/barchartwidget.h"
#include "plot/ccurveplot.h"
#include "plot/colorselectbutton.h"
#include "runscene.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "storerun.h"
#include "storetool/drawing/chartpicture.h"
#include "storetool/drawing/drawingapplication.h"
#include "support/testprogram.h"

#include <QComboBox>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTableWidget>
#include <QTest>
#include <QXmlStreamReader>

#include <signal.h>

#include <utility>

namespace {

const QString kPlot = QStringLiteral("plot");
const QString kOutput = QStringLiteral("-o");
constexpr QSize kSize(1280, 720);
constexpr int kPatienceMs = 120000;

/// A store that reads the run of a scene.
class SceneStore
{
public:
    explicit SceneStore(const RunScene& scene)
        : m_store(scene.dataDirectory(), nullptr, scn::FileAccess::Read)
    {
    }
    ~SceneStore() { m_store.closeForExit(QDeadlineTimer(1000)); }
    SceneStore(const SceneStore&) = delete;
    SceneStore& operator=(const SceneStore&) = delete;

    CurveDataDB& store() { return m_store; }

private:
    CurveDataDB m_store;
};

/// The curves and the texts of a picture of lines.
struct Drawing
{
    QVector<QVector<QPointF>> curves; ///< Lines of more than two points, in pixels of the plot.
    QStringList colors;               ///< Of each of them.
    QStringList texts;
    QVector<double> heights; ///< Where each of them stands, from above.
    int images = 0;
    bool isWellFormed = false;
};

qint64 momentOf(const char* text)
{
    return QDateTime::fromString(QLatin1String(text), QStringLiteral("yyyy-MM-dd hh:mm:ss"))
        .toMSecsSinceEpoch();
}

QVector<QPointF> pointsOf(const QString& text)
{
    QVector<QPointF> points;
    for (const QString& pair : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        points.append({pair.section(QLatin1Char(','), 0, 0).toDouble(),
                       pair.section(QLatin1Char(','), 1, 1).toDouble()});
    }
    return points;
}

Drawing readSvg(const QString& path)
{
    Drawing drawing;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return drawing;
    }
    QXmlStreamReader reader(&file);
    QString color;
    double shift = 0;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        if (reader.name() == QLatin1String("g")) {
            color = reader.attributes().value(QLatin1String("stroke")).toString();
            shift = reader.attributes()
                        .value(QLatin1String("transform"))
                        .toString()
                        .section(QLatin1Char(','), 5, 5)
                        .remove(QLatin1Char(')'))
                        .toDouble();
        } else if (reader.name() == QLatin1String("image")) {
            ++drawing.images;
        } else if (reader.name() == QLatin1String("text")) {
            drawing.heights.append(shift +
                                   reader.attributes().value(QLatin1String("y")).toDouble());
            drawing.texts.append(reader.readElementText().trimmed());
        } else if (reader.name() == QLatin1String("polyline")) {
            const QVector<QPointF> points =
                pointsOf(reader.attributes().value(QLatin1String("points")).toString());
            if (points.size() > 2) {
                drawing.curves.append(points);
                drawing.colors.append(color);
            }
        }
    }
    drawing.isWellFormed = !reader.hasError();
    return drawing;
}

/// A chart window of the program on a run that is over, with the channels 101 and 102 chosen.
class SceneChart
{
public:
    explicit SceneChart(CurveDataDB& store)
    {
        QStringList channels{QStringLiteral("无")};
        for (const int channel : {101, 102}) {
            channels.append(QStringLiteral("%1(Vdc)").arg(channel));
            g_curveSeries[channel] =
                std::make_shared<CurveSeriesData>(channels.constLast(), &store);
            g_scanChannels[channel] = QStringLiteral("Vdc");
        }
        m_chart.setChannelList(channels);
        m_chart.resize(1500, 1000);
        m_chart.show();
        choose(0, Qt::Key_Down);
        choose(1, Qt::Key_End);
        m_plot->setFollowTime(false);
    }
    ~SceneChart()
    {
        g_curveSeries.clear();
        g_scanChannels.clear();
    }
    SceneChart(const SceneChart&) = delete;
    SceneChart& operator=(const SceneChart&) = delete;

    /// The plot of a time.
    QImage picture(const QSize& size, const scnstore::PictureContent& content)
    {
        m_plot->setFixedSize(size);
        m_plot->setAxisScale(QwtPlot::xBottom, static_cast<double>(content.start),
                             static_cast<double>(content.end));
        m_plot->showCurrentView();
        const bool isLoaded = QTest::qWaitFor([this] { return !m_plot->isLoading(); });
        return isLoaded ? m_plot->grab().toImage().convertToFormat(QImage::Format_RGB32) : QImage();
    }

private:
    /// Chooses the channel that a key leads to.
    void choose(int row, Qt::Key key) const
    {
        auto* box =
            qobject_cast<QComboBox*>(m_chart.findChild<QTableWidget*>()->cellWidget(row, 2));
        box->setFocus();
        QTest::keyClick(box, key);
    }

    BarChartWidget m_chart;
    CCurvePlot* m_plot = m_chart.findChild<CCurvePlot*>();
};

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden);
}

QString colorOf(int row)
{
    return ColorSelectButton::paletteColor(row).name();
}

} // namespace

/// Pictures of runs: what a chart shows of them.
class TestStorePlot : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void pixelsAreThoseOfAChart();
    void tagsStandAtTheMeans();
    void linesHaveTheReadings();
    void gridLinesHaveTheirValues();
    void longLinesAreThinnedAsInAChart();
    void pdfHasOnePage();
    void optionsChooseWhatIsDrawn();
    void firstFortyCurvesAreDrawn();
    void singleReadingHasAMinute();
    void picturesAreAlikeEverywhere();
    void lightPictureIsLight();
    void wrongCallIsASentence_data();
    void wrongCallIsASentence();
    void fileOfARunIsNotDrawnOver();
    void damagedRunLeavesNoPicture_data();
    void damagedRunLeavesNoPicture();
    void deletedRunIsDrawnFromItsKeptFiles();
    void interruptLeavesThePictureBefore();
    void fullDiskIsASentence();
};

void TestStorePlot::initTestCase()
{
    scnstore::applyPictureStyle(scnstore::PictureStyle::Dark);
}

/// What is in the window of a chart in which the same channels were chosen and the same time is on display.
void TestStorePlot::pixelsAreThoseOfAChart()
{
    const RunScene scene;
    scene.addDay("20260112", 20000);
    scene.addDay("20260113", 20000);
    const QStringList curves{QStringLiteral("101(Vdc)"), QStringLiteral("102(Vdc)")};
    SceneStore reader(scene);
    // It takes the first colours of the palette.
    SceneChart chart(reader.store());
    using Times = std::pair<const char*, const char*>;
    for (const auto& [from, to] : {Times("2026-01-12 08:00:00", "2026-01-12 09:00:00"),
                                   Times("2026-01-12 06:30:00", "2026-01-13 13:00:00")}) {
        const QString file = scene.path(QStringLiteral("run.png"));
        const StoreRun run =
            runStore({kPlot, scene.dataDirectory(), kOutput, file, QStringLiteral("--from"),
                      QLatin1String(from), QStringLiteral("--to"), QLatin1String(to)});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.output + run.errors, QByteArray());
        const QImage picture(file);
        QCOMPARE(picture.size(), kSize);

        const scnstore::PictureContent content{curves, momentOf(from), momentOf(to)};
        scnstore::ChartPicture model(reader.store(), content, kSize);
        QVERIFY(model.load([] { return false; }));
        const QRect place(model.plot().mapTo(&model, QPoint()), model.plot().size());
        QVERIFY(picture.rect().contains(place));
        QCOMPARE(picture.copy(place).convertToFormat(QImage::Format_RGB32),
                 chart.picture(place.size(), content));
    }
}

/// The values go from 1/3 and 2/3 up by whole numbers; the axis has an eighth of them above and below.
void TestStorePlot::tagsStandAtTheMeans()
{
    const RunScene scene;
    scene.addDay("20260112", 600000);
    const QString file = scene.path(QStringLiteral("run.png"));
    QCOMPARE(runStore({kPlot, scene.dataDirectory(), kOutput, file}).exitCode, 0);
    const QImage picture(file);
    // Six hours of 36 readings and two of 12.
    const double lowest = 1.0 / 3;
    const double highest = 35 + 2.0 / 3;
    const double margin = (highest - lowest) / 8;
    const double mean = (36 * 17.5 + 12 * 5.5) / 48;
    for (const int row : {0, 1}) {
        int top = picture.height();
        int bottom = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 10; x < 55; ++x) {
                const bool isLegend = y > picture.height() - 40;
                if (!isLegend && picture.pixelColor(x, y).name() == colorOf(row)) {
                    top = qMin(top, y);
                    bottom = qMax(bottom, y);
                }
            }
        }
        QVERIFY(top < bottom);
        const double share =
            (highest + margin - (mean + (row + 1) / 3.0)) / (highest - lowest + 2 * margin);
        // The strip begins below the margin and ends above the legend and another two.
        const double expected = 10 + share * (kSize.height() - 50);
        QVERIFY2(qAbs((top + bottom) / 2.0 - expected) < 8,
                 qPrintable(QStringLiteral("%1 %2 %3").arg(top).arg(bottom).arg(expected)));
    }
}

void TestStorePlot::linesHaveTheReadings()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString file = scene.path(QStringLiteral("run.SVG"));
    QCOMPARE(runStore({kPlot, scene.dataDirectory(), kOutput, file}).exitCode, 0);
    const Drawing drawing = readSvg(file);
    QVERIFY(drawing.isWellFormed);
    QCOMPARE(drawing.images, 0);
    QCOMPARE(drawing.curves.size(), 2);
    QCOMPARE(drawing.colors, (QStringList{colorOf(0), colorOf(1)}));
    for (const QVector<QPointF>& curve : drawing.curves) {
        QCOMPARE(curve.size(), 480);
        // Equal times are equally far apart.
        const double step = (curve.last().x() - curve.first().x()) / 479;
        QVERIFY(step > 2);
        for (int i = 1; i < curve.size(); ++i) {
            QVERIFY(qAbs(curve.at(i).x() - curve.at(i - 1).x() - step) < 0.01);
            // One more at each reading, from the begin at each table.
            QVERIFY(i == 360 || curve.at(i).y() < curve.at(i - 1).y());
        }
    }
    for (const char* text : {"101(Vdc)", "102(Vdc)", "101>", "102>", "2026/01/12"}) {
        QVERIFY2(drawing.texts.contains(QLatin1String(text)), text);
    }
}

/// Each stands at its grid line: the readings go up from 1/3 by one.
void TestStorePlot::gridLinesHaveTheirValues()
{
    const RunScene scene;
    scene.addDay("20260112", 600000);
    const QString file = scene.path(QStringLiteral("run.svg"));
    QCOMPARE(runStore({kPlot, scene.dataDirectory(), kOutput, file}).exitCode, 0);
    const Drawing drawing = readSvg(file);
    QCOMPARE(drawing.curves.size(), 2);
    const double bottom = drawing.curves.at(0).at(0).y();
    const double top = drawing.curves.at(0).at(35).y();
    for (const int value : {0, 10, 20, 30}) {
        const int text = drawing.texts.indexOf(QString::number(value));
        QVERIFY2(text >= 0, qPrintable(drawing.texts.join(QLatin1Char('|'))));
        const double line = bottom + (value - 1.0 / 3) / 35 * (top - bottom);
        // Letters stand on their baseline, some pixels below their middle. The canvas lies 10 pixels down.
        QVERIFY2(qAbs(drawing.heights.at(text) - (line + 10)) < 8,
                 qPrintable(QStringLiteral("%1 %2").arg(drawing.heights.at(text)).arg(line)));
    }
}

void TestStorePlot::longLinesAreThinnedAsInAChart()
{
    const RunScene scene;
    scene.addDay("20260112", 1000);
    const QString file = scene.path(QStringLiteral("run.svg"));
    QCOMPARE(runStore({kPlot, scene.dataDirectory(), kOutput, file}).exitCode, 0);
    const Drawing drawing = readSvg(file);
    QCOMPARE(drawing.curves.size(), 2);
    QCOMPARE(drawing.curves.at(0).size(), 10000);
    QCOMPARE(drawing.curves.at(1).size(), 10000);
    // Loading goes on after the first paint, which leaves the background as pixels.
    QCOMPARE(drawing.images, 0);
}

void TestStorePlot::pdfHasOnePage()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString path = scene.path(QStringLiteral("run.pdf"));
    QCOMPARE(runStore({kPlot, scene.dataDirectory(), kOutput, path}).exitCode, 0);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    QVERIFY(bytes.startsWith("%PDF-1."));
    QVERIFY(bytes.trimmed().endsWith("%%EOF"));
    QCOMPARE(bytes.count("/Type /Page\n"), 1);
    QVERIFY(bytes.contains("/MediaBox [0 0 960"));
    // Lines and letters, no pixels.
    QVERIFY(bytes.contains("/Type /Font"));
    QCOMPARE(bytes.count("/Subtype /Image"), 0);
}

void TestStorePlot::optionsChooseWhatIsDrawn()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString file = scene.path(QStringLiteral("run.svg"));
    QCOMPARE(runStore({kPlot, scene.dataDirectory(), kOutput, file, QStringLiteral("--curves"),
                       QStringLiteral("102,101:102"), QStringLiteral("--from"),
                       QStringLiteral("2026-01-12 07:00:00"), QStringLiteral("--to"),
                       QStringLiteral("2026-01-12 07:30:00"), QStringLiteral("--size"),
                       QStringLiteral("900x500")})
                 .exitCode,
             0);
    const Drawing drawing = readSvg(file);
    // The first of the list has the first colour, as in the table of a chart.
    QVERIFY(drawing.texts.indexOf(QStringLiteral("102(Vdc)")) <
            drawing.texts.indexOf(QStringLiteral("101(Vdc)")));
    QCOMPARE(drawing.texts.count(QStringLiteral("102(Vdc)")), 1);
    QCOMPARE(drawing.colors, (QStringList{colorOf(0), colorOf(1)}));
    // From 07:00:00.002 to 07:29:00.002, and the reading before, on the way to which the line is cut.
    QVERIFY(drawing.curves.at(0).size() >= 30 && drawing.curves.at(0).size() <= 31);
    QFile text(file);
    QVERIFY(text.open(QIODevice::ReadOnly));
    QVERIFY(text.readAll().contains("viewBox=\"0 0 900 500\""));
}

void TestStorePlot::firstFortyCurvesAreDrawn()
{
    const RunScene scene;
    {
        DayFileWriter file(scene.dayFile("20260112"));
        const qint64 start = localTime("2026-01-12 06:00:00.000");
        for (int id = 1; id <= 41; ++id) {
            file.addCurve(id, QStringLiteral("%1(Vdc)").arg(100 + id));
            file.addBatch(id, start, DayFileWriter::tableName(id, start),
                          {{static_cast<double>(start), 1.0 * id},
                           {static_cast<double>(start + 1000), 1.5 * id},
                           {static_cast<double>(start + 2000), 1.0 * id}});
        }
    }
    const QString file = scene.path(QStringLiteral("run.svg"));
    const StoreRun all = runStore({kPlot, scene.dataDirectory(), kOutput, file});
    QCOMPARE(all.exitCode, 0);
    QCOMPARE(all.errors, QByteArray("scn4070a-store: plot: the picture has the first 40 of 41 "
                                    "curves. Choose others with --curves.\n"));
    const Drawing drawing = readSvg(file);
    QCOMPARE(drawing.curves.size(), 40);
    QCOMPARE(drawing.colors.at(18), colorOf(0));
    QVERIFY(drawing.texts.contains(QStringLiteral("140(Vdc)")));
    QVERIFY(!drawing.texts.contains(QStringLiteral("141(Vdc)")));

    const StoreRun tooMany =
        runStore({kPlot, scene.dataDirectory(), kOutput, scene.path(QStringLiteral("more.svg")),
                  QStringLiteral("--curves"), QStringLiteral("101:141")});
    QCOMPARE(tooMany.exitCode, 1);
    QCOMPARE(tooMany.errors, QByteArray("scn4070a-store: plot: a chart has 40 curves at most; "
                                        "these are 41.\n"));
    QCOMPARE(filesIn(scene.folder()), QStringList{QStringLiteral("run.svg")});
}

void TestStorePlot::singleReadingHasAMinute()
{
    const RunScene scene;
    {
        DayFileWriter file(scene.dayFile("20260112"));
        const qint64 start = localTime("2026-01-12 06:00:00.000");
        file.addCurve(1, QStringLiteral("101(℃)"));
        file.addBatch(1, start, DayFileWriter::tableName(1, start),
                      {{static_cast<double>(start), 21.5}});
    }
    const QString file = scene.path(QStringLiteral("run.svg"));
    const StoreRun run = runStore({kPlot, scene.dataDirectory(), kOutput, file});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    const Drawing drawing = readSvg(file);
    QVERIFY(drawing.texts.contains(QStringLiteral("101(℃)")));
    QVERIFY(drawing.texts.contains(QStringLiteral("06:00:50")));
}

/// A display or its settings, which a batch job on a server does not have, change nothing.
void TestStorePlot::picturesAreAlikeEverywhere()
{
    const RunScene scene;
    scene.addDay("20260112");
    QByteArray first;
    using Setting = std::pair<const char*, const char*>;
    for (const auto& [name, value] :
         {Setting("QT_QPA_PLATFORM", ""), Setting("QT_QPA_PLATFORM", "xcb"),
          Setting("QT_SCALE_FACTOR", "2"), Setting("QT_FONT_DPI", "200"),
          Setting("QT_STYLE_OVERRIDE", "windows")}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        if (*value) {
            environment.insert(QLatin1String(name), QLatin1String(value));
        }
        QFile file(scene.path(QStringLiteral("run.png")));
        const StoreRun run =
            runStore({kPlot, scene.dataDirectory(), kOutput, file.fileName()}, environment);
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        first = first.isEmpty() ? bytes : first;
        QVERIFY2(bytes == first, name);
    }
}

void TestStorePlot::lightPictureIsLight()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString file = scene.path(QStringLiteral("run.png"));
    for (const bool isLight : {false, true}) {
        QStringList call{kPlot, scene.dataDirectory(), kOutput, file};
        if (isLight) {
            call.append(QStringLiteral("--light"));
        }
        QCOMPARE(runStore(call).exitCode, 0);
        const QImage picture(file);
        // A corner, the strip of the tags, the canvas, and what is beside the legend.
        for (const QPoint& place :
             {QPoint(2, 2), QPoint(12, 12), QPoint(70, 14), QPoint(1200, 705)}) {
            QCOMPARE(picture.pixelColor(place).name(),
                     isLight ? QStringLiteral("#ffffff") : QStringLiteral("#19232d"));
        }
    }
}

void TestStorePlot::wrongCallIsASentence_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("sentence");

    const auto row = [](const char* name, const QStringList& arguments, const char* sentence) {
        QTest::newRow(name) << arguments << QByteArray(sentence);
    };
    const QStringList toFile{kOutput, QStringLiteral("run.png")};
    row("no file", {}, "-o FILE is missing.");
    row("no picture", {kOutput, QStringLiteral("run.gif")},
        "'run.gif' does not end in .png, .svg or .pdf.");
    row("no folder", {kOutput, QStringLiteral("nowhere/run.png")},
        "nowhere/run.png cannot be written: ");
    row("no curve", toFile + QStringList{QStringLiteral("--curves"), QStringLiteral("103")},
        "the run has no curve '103'. It has 101(Vdc), 102(Vdc).");
    row("no time", toFile + QStringList{QStringLiteral("--from"), QStringLiteral("noon")},
        "'noon' is no time.");
    row("nothing in that time",
        toFile + QStringList{QStringLiteral("--from"), QStringLiteral("2026-01-11 00:00:00"),
                             QStringLiteral("--to"), QStringLiteral("2026-01-11 12:00:00")},
        "no reading lies in that time.");
    row("nothing between two readings",
        toFile + QStringList{QStringLiteral("--from"), QStringLiteral("2026-01-12 07:00:02"),
                             QStringLiteral("--to"), QStringLiteral("2026-01-12 07:00:58")},
        "no reading lies in that time.");
    row("no size", toFile + QStringList{QStringLiteral("--size"), QStringLiteral("large")},
        "'large' is no size. Write it as 1280x720; no side is above 8192.");
    row("large", toFile + QStringList{QStringLiteral("--size"), QStringLiteral("8193x100")},
        "'8193x100' is no size.");
    row("small", toFile + QStringList{QStringLiteral("--size"), QStringLiteral("300x120")},
        "a picture of 300x120 is too small for these curves.");
}

void TestStorePlot::wrongCallIsASentence()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, sentence);

    const RunScene scene;
    scene.addDay("20260112");
    const StoreRun run = runStore(QStringList{kPlot, scene.dataDirectory()} + arguments);
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errors.startsWith("scn4070a-store: plot: " + sentence), run.errors.constData());
    QCOMPARE(run.errors.count('\n'), 1);
    QVERIFY(!QFile::exists(QStringLiteral("run.png")));
}

void TestStorePlot::fileOfARunIsNotDrawnOver()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString picture = scene.path(QStringLiteral("picture.png"));
    QVERIFY(QFile::link(scene.dayFile("20260112"), picture));
    const QStringList before = RunScene::listing(scene.dataDirectory());
    const StoreRun run = runStore({kPlot, scene.dataDirectory(), kOutput, picture});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errors.contains("picture.png is a file of a run and is not written."),
             run.errors.constData());
    QCOMPARE(RunScene::listing(scene.dataDirectory()), before);
}

void TestStorePlot::damagedRunLeavesNoPicture_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no database") << 0 << QByteArray(4096, 'x');
    QTest::newRow("pages of a table destroyed") << 20 * 4096 << QByteArray(3 * 4096, '\0');
    QTest::newRow("cut off") << 30 * 4096 << QByteArray();
    QTest::newRow("pages in the middle destroyed") << 60 * 4096 << QByteArray(20 * 4096, '\xff');
}

void TestStorePlot::damagedRunLeavesNoPicture()
{
    QFETCH(int, place);
    QFETCH(QByteArray, bytes);

    const RunScene scene;
    scene.addDay("20260111", 5000);
    scene.addDay("20260112", 5000);
    spoil(scene.dayFile("20260112"), place, bytes);
    const StoreRun run =
        runStore({kPlot, scene.dataDirectory(), kOutput, scene.path(QStringLiteral("run.png"))});
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.startsWith("scn4070a-store: plot: "), run.errors.constData());
    QCOMPARE(run.errors.count('\n'), 1);
    QCOMPARE(filesIn(scene.folder()), QStringList());
}

void TestStorePlot::deletedRunIsDrawnFromItsKeptFiles()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString before = scene.path(QStringLiteral("before.png"));
    const QString after = scene.path(QStringLiteral("after.png"));
    QCOMPARE(runStore({kPlot, scene.dataDirectory(), kOutput, before}).exitCode, 0);
    const QString kept = scene.keep();
    QCOMPARE(runStore({kPlot, kept, kOutput, after}).exitCode, 3);
    QVERIFY(!QFile::exists(after));
    scene.clear();
    const QStringList files = RunScene::listing(kept);
    QCOMPARE(runStore({kPlot, kept, kOutput, after}).exitCode, 0);
    QCOMPARE(QImage(after), QImage(before));
    QCOMPARE(RunScene::listing(kept), files);
}

/// Interrupts at any moment, many of them after the end: the picture is the former or the new one.
void TestStorePlot::interruptLeavesThePictureBefore()
{
    const RunScene scene;
    scene.addDay("20260112", 500);
    scene.addDay("20260113", 500);
    const QByteArray before("the picture before");
    int interrupted = 0;
    for (int delayMs = 0; delayMs < 400; delayMs += 20) {
        QFile file(scene.path(QStringLiteral("run.svg")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(before);
        file.close();
        QProcess process;
        process.start(QStringLiteral(SCN_STORE),
                      {kPlot, scene.dataDirectory(), kOutput, file.fileName()});
        QVERIFY(process.waitForStarted());
        if (!process.waitForFinished(delayMs)) {
            ::kill(static_cast<pid_t>(process.processId()), SIGINT);
        }
        QVERIFY(process.state() == QProcess::NotRunning || process.waitForFinished(kPatienceMs));
        QCOMPARE(filesIn(scene.folder()), QStringList{QStringLiteral("run.svg")});
        QVERIFY(file.open(QIODevice::ReadOnly));
        if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0) {
            QVERIFY(readSvg(file.fileName()).isWellFormed);
            continue;
        }
        QCOMPARE(file.readAll(), before);
        interrupted += process.exitStatus() == QProcess::NormalExit ? 1 : 0;
        if (process.exitStatus() == QProcess::NormalExit) {
            QCOMPARE(process.readAllStandardError(),
                     QByteArray("scn4070a-store: plot: interrupted; no file is left.\n"));
        }
    }
    QVERIFY(interrupted > 0);
}

void TestStorePlot::fullDiskIsASentence()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString file = scene.path(QStringLiteral("run.svg"));
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), file));
    const StoreRun run = runStore({kPlot, scene.dataDirectory(), kOutput, file});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errors.contains("run.svg cannot be written: No space left on device."),
             run.errors.constData());
}

SCN_TEST(TestStorePlot, QApplication)
#include "test_storeplot.moc"
