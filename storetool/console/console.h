#pragma once

#include "storetool/console/exitcode.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <optional>

namespace scnstore {

/// Writes a text to the standard output as it is. False if it could not be written.
bool print(const QString& text);

/// Writes "scn4070a-store: <sentence>" and a line feed to the standard error, and returns the code.
int fail(ExitCode code, const QString& sentence);

/// Reads the arguments of a command, the first of which is its name. Adds --help; the parser has the
/// command's description, options and positional arguments. The exit code if the program ends here, after
/// the help or an error.
std::optional<int> readArguments(QCommandLineParser& parser, const QStringList& arguments);

} // namespace scnstore
