#include "storetool/console/console.h"

#include <QByteArray>

#include <cstdio>

namespace scnstore {

bool print(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
}

int fail(ExitCode code, const QString& sentence)
{
    std::fprintf(stderr, "scn4070a-store: %s\n", qUtf8Printable(sentence));
    return code;
}

std::optional<int> readArguments(QCommandLineParser& parser, const QStringList& arguments)
{
    const QCommandLineOption help = parser.addHelpOption();
    const QString command = arguments.value(0);
    if (!parser.parse(arguments)) {
        return fail(kFailed, QStringLiteral("%1: %2. See 'scn4070a-store %1 --help'.")
                                 .arg(command, parser.errorText().remove(QLatin1Char('.'))));
    }
    if (parser.isSet(help)) {
        // The parser names the program alone.
        QString text = parser.helpText();
        text.replace(QStringLiteral("Usage: ") + QCoreApplication::arguments().value(0),
                     QStringLiteral("Usage: scn4070a-store ") + command);
        return print(text) ? kFine : kFailed;
    }
    return std::nullopt;
}

} // namespace scnstore
