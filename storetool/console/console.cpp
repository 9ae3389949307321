#include "storetool/console/console.h"

#include <QByteArray>
#include <QJsonDocument>

#include <algorithm>
#include <cstdio>

namespace scnstore {

QString shown(QString text)
{
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control) {
            character = QChar::ReplacementCharacter;
        }
    }
    return text;
}

bool print(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
}

int fail(ExitCode code, const QString& sentence)
{
    std::fprintf(stderr, "scn4070a-store: %s\n", qUtf8Printable(shown(sentence)));
    return code;
}

bool printJson(const QJsonObject& object)
{
    return print(QString::fromUtf8(QJsonDocument(object).toJson()));
}

QString tableText(const QVector<QStringList>& rows, const QSet<int>& numberColumns)
{
    QVector<int> widths(rows.value(0).size());
    for (const QStringList& row : rows) {
        for (int column = 0; column < widths.size(); ++column) {
            widths[column] = std::max(widths.at(column), row.value(column).size());
        }
    }
    QString text;
    for (const QStringList& row : rows) {
        QString line;
        for (int column = 0; column < widths.size(); ++column) {
            const QString cell = shown(row.value(column));
            line += numberColumns.contains(column) ? cell.rightJustified(widths.at(column))
                                                   : cell.leftJustified(widths.at(column));
            line += QStringLiteral("  ");
        }
        while (line.endsWith(QLatin1Char(' '))) {
            line.chop(1);
        }
        text += line + QLatin1Char('\n');
    }
    return text;
}

QString timeText(const QDateTime& time)
{
    return time.isValid() ? time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"))
                          : QStringLiteral("-");
}

QJsonValue timeJson(const QDateTime& time)
{
    if (!time.isValid()) {
        return QJsonValue();
    }
    const QDateTime local = time.toLocalTime();
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

std::optional<int> readArguments(QCommandLineParser& parser, const QStringList& arguments,
                                 const ArgumentCount& count)
{
    // Qt's own would add one for its own options.
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Shows this help and ends."));
    parser.addOption(help);
    const QString command = arguments.value(0);
    const auto refuse = [&command](const QString& what) {
        return fail(kFailed,
                    QStringLiteral("%1: %2. See 'scn4070a-store %1 --help'.").arg(command, what));
    };
    if (!parser.parse(arguments)) {
        return refuse(parser.errorText().remove(QLatin1Char('.')));
    }
    if (parser.isSet(help)) {
        // The parser names the program alone.
        QString text = parser.helpText();
        text.replace(QStringLiteral("Usage: ") + QCoreApplication::arguments().value(0),
                     QStringLiteral("Usage: scn4070a-store ") + command);
        return print(text) ? kFine : kFailed;
    }
    const int given = parser.positionalArguments().size();
    if (given < count.least) {
        return refuse(QStringLiteral("an argument is missing"));
    }
    if (given > count.most) {
        return refuse(QStringLiteral("'%1' is an argument too many")
                          .arg(parser.positionalArguments().at(count.most)));
    }
    return std::nullopt;
}

void silenceLog()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

} // namespace scnstore
