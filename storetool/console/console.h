#pragma once

#include "storetool/console/exitcode.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace scnstore {

/// A name or a path for a terminal: control characters, which it would obey, are replaced.
QString shown(QString text);

/// Writes a text to the standard output as it is. False if it could not be written.
bool print(const QString& text);

/// Writes "scn4070a-store: <sentence>" and a line feed to the standard error, as shown() has it, and returns
/// the code.
int fail(ExitCode code, const QString& sentence);

/// Prints a JSON object, one member a line.
bool printJson(const QJsonObject& object);

/// Columns beside each other, two blanks apart; the first row has their titles. Numbers, in the columns
/// given by their places, stand to the right.
QString tableText(const QVector<QStringList>& rows, const QSet<int>& numberColumns);

/// "2026-01-12 07:30:01" in local time; "-" for an invalid time.
QString timeText(const QDateTime& time);

/// With milliseconds and the offset from UTC: "2026-01-12T07:30:01.250+08:00". Null for an invalid time.
QJsonValue timeJson(const QDateTime& time);

/// How many positional arguments a command takes.
struct ArgumentCount
{
    int least;
    int most;
};

/// Reads the arguments of a command, the first of which is its name. Adds --help; the parser has the
/// command's description, options and positional arguments. The exit code if the program ends here, after
/// the help or an error.
std::optional<int> readArguments(QCommandLineParser& parser, const QStringList& arguments,
                                 const ArgumentCount& count);

/// Drops the log lines of the libraries below, which are the control program's.
void silenceLog();

} // namespace scnstore
