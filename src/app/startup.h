#pragma once

class QFile;
class QString;
class QWidget;

/// Steps of main(). GUI thread.
namespace scn::startup {

/// Makes a write to a launcher that is gone fail instead of killing the program.
void ignoreBrokenPipes();

/// Gives the C library the system's time zone for good, unless `TZ` names one. Otherwise it looks at the
/// zone's file again at each local time: a tenth of the work of a run.
void keepTimeZone();

/// Keeps the memory of large images for the next ones: each replot of a chart needs several. Returned to the
/// system and taken anew, every page of it costs a fault.
void keepFreedMemory();

/// Numbers are shown with a decimal point, also where the system's have a comma: a box of such a system takes
/// the point of "0.25" for one between thousands and makes 25 of it. The comma key types the point there.
/// Before any widget.
void keepDecimalPoint();

/// Registers the types used in queued connections and in calls by name.
void registerMetaTypes();

/// Sets the application's style sheet from `file`, UTF-8 up to the first zero byte, and closes the file.
/// Without it, logs a debug line and goes on without a style sheet.
void applyStyleSheet(QFile& file);

/// Substitutes an installed Chinese font for the fonts of the style sheets if those are missing. Qt's own
/// substitute would draw letters and digits in a much wider font.
void substituteFonts();

/// Loads the Chinese texts of Qt's own menus and dialogs from `directory`. Without them, logs a line; the
/// texts stay English.
void loadTranslations(const QString& directory);

/// Moves the window to its place and shows it: at once if the instrument is there, and in any case once the
/// event loop runs.
void presentWindow(QWidget& window);

} // namespace scn::startup
