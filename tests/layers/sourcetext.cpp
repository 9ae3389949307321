#include "sourcetext.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

QString textOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return QString();
    }
    return QString::fromUtf8(file.readAll());
}

QString folderOf(const QString& file)
{
    return QFileInfo(file).path();
}

QString inFolder(const QString& folder, const QString& file)
{
    return QDir::cleanPath(folder + QLatin1Char('/') + file);
}

QVector<CMakeCall> cmakeCalls(const QString& path)
{
    static const QRegularExpression comment(QStringLiteral("#[^\n]*"));
    static const QRegularExpression call(QStringLiteral(R"((\w+)\s*\(([^)]*)\))"));
    static const QRegularExpression blanks(QStringLiteral("\\s+"));

    QVector<CMakeCall> calls;
    QRegularExpressionMatchIterator matches = call.globalMatch(textOf(path).remove(comment));
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        calls.append({match.captured(1), match.captured(2).split(blanks, Qt::SkipEmptyParts)});
    }
    return calls;
}

QStringList topFolders(const QString& root)
{
    QStringList folders;
    for (const CMakeCall& call : cmakeCalls(root + QStringLiteral("/CMakeLists.txt"))) {
        if (call.command == QLatin1String("add_subdirectory")) {
            folders.append(call.words.value(0));
        }
    }
    return folders;
}
