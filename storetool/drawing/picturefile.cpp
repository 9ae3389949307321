#include "storetool/drawing/picturefile.h"

#include "storetool/drawing/chartpicture.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QMarginsF>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>

namespace scnstore {
namespace {

/// That of the widgets: else their texts would have other sizes.
constexpr int kDotsPerInch = 96;
constexpr double kPointsPerInch = 72.0;

void paintLines(ChartPicture& picture, QPaintDevice& device)
{
    picture.paintLines();
    QPainter painter(&device);
    picture.render(&painter);
}

void drawPixels(ChartPicture& picture, QIODevice& file)
{
    QImage image(picture.size(), QImage::Format_RGB32);
    picture.render(&image);
    image.save(&file, "PNG");
}

void drawSvg(ChartPicture& picture, QIODevice& file, const QString& title)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&file);
    svg.setSize(picture.size());
    svg.setViewBox(picture.rect());
    svg.setResolution(kDotsPerInch);
    svg.setTitle(title);
    paintLines(picture, svg);
}

void drawPdf(ChartPicture& picture, QIODevice& file, const QString& title)
{
    QPdfWriter pdf(&file);
    pdf.setResolution(kDotsPerInch);
    pdf.setPageSize(QPageSize(QSizeF(picture.size()) * (kPointsPerInch / kDotsPerInch),
                              QPageSize::Point, QString(), QPageSize::ExactMatch));
    pdf.setPageMargins(QMarginsF());
    pdf.setTitle(title);
    paintLines(picture, pdf);
}

} // namespace

std::optional<PictureFormat> pictureFormatOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("png")) {
        return PictureFormat::Png;
    }
    if (suffix == QLatin1String("svg")) {
        return PictureFormat::Svg;
    }
    return suffix == QLatin1String("pdf") ? std::make_optional(PictureFormat::Pdf) : std::nullopt;
}

QByteArray drawn(ChartPicture& picture, PictureFormat format, const QString& title)
{
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    switch (format) {
    case PictureFormat::Png:
        drawPixels(picture, file);
        break;
    case PictureFormat::Svg:
        drawSvg(picture, file, title);
        break;
    case PictureFormat::Pdf:
        drawPdf(picture, file, title);
        break;
    }
    return file.data();
}

} // namespace scnstore
