#include "storetool/plotcommand.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/console/outputfile.h"
#include "storetool/drawing/chartpicture.h"
#include "storetool/drawing/drawingapplication.h"
#include "storetool/drawing/picturefile.h"
#include "storetool/runs/openrun.h"
#include "storetool/runs/runoutput.h"
#include "storetool/runs/runstore.h"
#include "storetool/runs/selection.h"

#include <QRegularExpression>

namespace scnstore {
namespace {

const QString kInterrupted = QStringLiteral("interrupted; no file is left.");
constexpr int kMostPixels = 8192; // on each side
const QString kUsualSize = QStringLiteral("1280x720");

QCommandLineOption valued(const QStringList& names, const char* description, const char* value,
                          const QString& defaultValue = {})
{
    return QCommandLineOption(names, QString::fromLatin1(description), QString::fromLatin1(value),
                              defaultValue);
}

/// The command's options.
struct PlotOptions
{
    QCommandLineOption output =
        valued({QStringLiteral("o"), QStringLiteral("output")},
               "File to write: its name ends in .png, .svg or .pdf.", "file");
    QCommandLineOption curves = valued(
        {QStringLiteral("curves")},
        "Channels, ranges of them (101:110) and names of curves, between commas; at most as many "
        "as a chart has rows, 40.",
        "list");
    QCommandLineOption from =
        valued({QStringLiteral("from")}, "First moment, 2026-01-12 07:30:00.", "time");
    QCommandLineOption to = valued({QStringLiteral("to")}, "Last moment.", "time");
    QCommandLineOption size =
        valued({QStringLiteral("size")}, "Width and height in pixels, 1280x720 by default.", "WxH",
               kUsualSize);
    QCommandLineOption light{QStringLiteral("light"), QStringLiteral("Light, to be printed.")};

    void addTo(QCommandLineParser& parser) const
    {
        parser.addOptions({output, curves, from, to, size, light});
    }
};

int failPlot(ExitCode code, const QString& sentence)
{
    return fail(code, QStringLiteral("plot: ") + sentence);
}

/// An invalid size for a text that is none.
QSize typedSize(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5})[xX×](\\d{1,5})$"));
    const QRegularExpressionMatch match = form.match(text);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    const bool isSize = match.hasMatch() && size.width() <= kMostPixels &&
                        size.height() <= kMostPixels && !size.isEmpty();
    return isSize ? size : QSize();
}

/// One call of the command.
class PlotCall
{
public:
    PlotCall(const QCommandLineParser& parser, const PlotOptions& options)
        : m_parser(parser)
        , m_options(options)
    {
    }

    int run();

private:
    QString value(const QCommandLineOption& option) const { return m_parser.value(option); }
    int openAndDraw() const;
    int drawRun(const OpenRun& open, const RunBounds& bounds) const;
    bool chooseCurves(const QMap<int, QString>& curves, QStringList& chosen,
                      QString& sentence) const;
    int draw(ChartPicture& picture, const OpenRun& open, const QString& title) const;
    int write(const QByteArray& bytes) const;

    const QCommandLineParser& m_parser;
    const PlotOptions& m_options;
    PictureFormat m_format = PictureFormat::Png;
    QSize m_size;
};

int PlotCall::run()
{
    if (!m_parser.isSet(m_options.output)) {
        return failPlot(kFailed, QStringLiteral("-o FILE is missing."));
    }
    const std::optional<PictureFormat> format = pictureFormatOf(value(m_options.output));
    if (!format) {
        return failPlot(kFailed, QStringLiteral("'%1' does not end in .png, .svg or .pdf.")
                                     .arg(value(m_options.output)));
    }
    m_format = *format;
    m_size = typedSize(value(m_options.size));
    if (!m_size.isValid()) {
        return failPlot(kFailed,
                        QStringLiteral("'%1' is no size. Write it as %2; no side is above %3.")
                            .arg(value(m_options.size), kUsualSize, QString::number(kMostPixels)));
    }
    return openAndDraw();
}

int PlotCall::openAndDraw() const
{
    int status = kFine;
    const auto open = openRun(QStringLiteral("plot"), m_parser, status);
    if (!open) {
        return status;
    }
    if (const auto refusal = outputRefusalOf(open->run(), value(m_options.output))) {
        return failPlot(kFailed, *refusal);
    }
    BoundsFailure failure;
    const std::optional<RunBounds> bounds = boundsOf(open->run(), failure);
    if (isInterrupted()) {
        return failPlot(kFailed, kInterrupted);
    }
    if (!bounds) {
        const std::optional<QString> excuse = open->watch().excuseFor(failure.metLock);
        return excuse ? failPlot(kFailed, *excuse) : failPlot(kDamaged, failure.sentence);
    }
    if (!bounds->hasReadings()) {
        return failPlot(kFailed, QStringLiteral("the run has no readings."));
    }
    return drawRun(*open, *bounds);
}

/// The rows of a chart: each curve once, in the order of the list.
bool PlotCall::chooseCurves(const QMap<int, QString>& curves, QStringList& chosen,
                            QString& sentence) const
{
    const QString list = value(m_options.curves);
    const std::optional<QList<int>> ids = selectedCurves(curves, list, sentence);
    if (!ids) {
        return false;
    }
    for (const int id : *ids) {
        chosen.append(curves.value(id));
    }
    chosen.removeDuplicates();
    const int most = ChartPicture::mostCurves();
    if (chosen.size() <= most) {
        return true;
    }
    if (!list.isEmpty()) {
        sentence = QStringLiteral("a chart has %1 curves at most; these are %2.")
                       .arg(QString::number(most), QString::number(chosen.size()));
        return false;
    }
    fail(kFine, QStringLiteral("plot: the picture has the first %1 of %2 curves. Choose others "
                               "with --curves.")
                    .arg(QString::number(most), QString::number(chosen.size())));
    chosen = chosen.mid(0, most);
    return true;
}

int PlotCall::drawRun(const OpenRun& open, const RunBounds& bounds) const
{
    const StoredRun& run = open.run();
    QString sentence;
    RunStore store(run);
    PictureContent content;
    const std::optional<TimeSelection> times =
        chooseCurves(store.store().curveNames(), content.curves, sentence)
            ? selectedTimes(bounds, value(m_options.from), value(m_options.to), sentence)
            : std::nullopt;
    if (!times) {
        return failPlot(kFailed, sentence);
    }
    content.start = times->start;
    content.end = times->end;
    applyPictureStyle(m_parser.isSet(m_options.light) ? PictureStyle::Light : PictureStyle::Dark);
    ChartPicture picture(store.store(), content, m_size);
    return draw(picture, open,
                QStringLiteral("%1 %2").arg(
                    run.serial, timeText(QDateTime::fromMSecsSinceEpoch(content.start))));
}

int PlotCall::draw(ChartPicture& picture, const OpenRun& open, const QString& title) const
{
    if (!picture.hasRoom()) {
        return failPlot(kFailed, QStringLiteral("a picture of %1 is too small for these curves.")
                                     .arg(value(m_options.size)));
    }
    if (!picture.load(isInterrupted)) {
        return failPlot(kFailed, kInterrupted);
    }
    if (!picture.isWhole() || !open.watch().isUnbroken()) {
        const std::optional<QString> excuse = open.excuse();
        return excuse ? failPlot(kFailed, *excuse)
                      : failPlot(kDamaged, QStringLiteral("the run cannot be read to its end: it "
                                                          "is damaged. 'scn4070a-store check' "
                                                          "tells more."));
    }
    if (!picture.hasReadings()) {
        return failPlot(kFailed, QStringLiteral("no reading lies in that time."));
    }
    return write(drawn(picture, m_format, title));
}

int PlotCall::write(const QByteArray& bytes) const
{
    OutputFile output(value(m_options.output));
    if (output.open() && output.device().write(bytes) == bytes.size() && output.finish()) {
        return kFine;
    }
    return failPlot(
        kFailed,
        QStringLiteral("%1 cannot be written: %2.").arg(value(m_options.output), output.failure()));
}

} // namespace

int runPlotCommand(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Draws a run as a chart of the program shows it."));
    const PlotOptions options;
    options.addTo(parser);
    addRunArgument(parser);
    if (const std::optional<int> end = readArguments(parser, arguments, {1, 1})) {
        return *end;
    }
    return PlotCall(parser, options).run();
}

} // namespace scnstore
