#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace scnstore {

class ChartPicture;

enum class PictureFormat { Png, Svg, Pdf };

/// The format that a file's name ends in; nothing for any other.
std::optional<PictureFormat> pictureFormatOf(const QString& path);

/// The loaded picture as the bytes of a file; the title is for programs that show one. Pixels as PNG, else
/// lines, at 96 to the inch.
QByteArray drawn(ChartPicture& picture, PictureFormat format, const QString& title);

} // namespace scnstore
