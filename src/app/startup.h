#pragma once

class QFile;
class QString;
class QWidget;

/// The steps of main() that can be told apart from it. GUI thread.
namespace Startup {

/// Makes a write to a launcher that has gone fail instead of ending the program.
void ignoreBrokenPipes();

/// Registers the types that travel through queued connections and by name.
void registerMetaTypes();

/// Makes the text of `file`, UTF-8 up to the first zero byte, the application's style sheet.
/// Without that file the program goes on plain, with one debug line. The file is closed again.
void applyStyleSheet(QFile& file);

/// Draws in an installed Chinese font what asks for the fonts of the style sheets, where those are
/// missing. The library's own choice would take its letters and digits from a much wider font.
void substituteFonts();

/// Loads the Chinese texts of the library's own menus and dialogs from its catalogue in
/// `directory`. Without it they stay English, with one log line.
void loadTranslations(const QString& directory);

/// Puts the window in its place and shows it: at once when the instrument is there, and in any case
/// when the event loop comes round.
void presentWindow(QWidget& window);

} // namespace Startup
