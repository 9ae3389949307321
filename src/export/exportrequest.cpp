#include "export/exportrequest.h"

#include "export/filename.h"

#include <QDateTime>
#include <QDir>

#include <chrono>

namespace {

/// How far the clocks are turned back.
constexpr std::chrono::hours kTurnBack{1};
const QString kRunTimeFormat = QStringLiteral("yyyy MM dd hh mm ss");

QString identityField(const QString& identity, int field)
{
    return identity.section(QLatin1Char(' '), field, field);
}

QDateTime runTime(const QString& text)
{
    return QDateTime::fromString(text, kRunTimeFormat);
}

/// The moment a text names: the one this far away if it has the same text.
qint64 momentOf(const QString& text, std::chrono::milliseconds offset)
{
    const qint64 moment = runTime(text).toMSecsSinceEpoch();
    const qint64 other = moment + offset.count();
    const bool isAmbiguous = QDateTime::fromMSecsSinceEpoch(other).toString(kRunTimeFormat) == text;
    return isAmbiguous ? other : moment;
}

} // namespace

QString exportSeparator(int row)
{
    switch (row) {
    case 1:
        return QStringLiteral(";");
    case 2:
        return QStringLiteral("\t");
    default:
        return QStringLiteral(",");
    }
}

QString exportFilePath(const QString& directory, const QString& identity, const QString& name)
{
    QString folder = directory;
    if (!folder.isEmpty() && !folder.endsWith(QDir::separator())) {
        folder += QDir::separator();
    }
    const QString base = name.isEmpty() ? QStringLiteral("顺序对齐曲线数据") : name;
    // Several arguments at once, so that no text is taken for a marker.
    const QString fileName =
        sanitizeFileName(QStringLiteral("%1_%2").arg(identityField(identity, 2), base));
    return QStringLiteral("%1%2.csv").arg(folder, fileName);
}

QMap<QString, QString> exportHeader(const QString& resourceName, const QString& identity,
                                    const QString& startText, const QString& endText)
{
    return {{QStringLiteral("address"), resourceName},
            {QStringLiteral("instrumentModel"), identityField(identity, 1)},
            {QStringLiteral("instrumentNum"), identityField(identity, 2)},
            {QStringLiteral("instrumentVer"), identityField(identity, 3)},
            {QStringLiteral("startTime"), startText},
            {QStringLiteral("endTime"), endText}};
}

scn::ExportRange exportRange(const QString& startText, const QString& endText)
{
    if (!runTime(startText).isValid() || !runTime(endText).isValid()) {
        return {};
    }
    return {momentOf(startText, -kTurnBack), momentOf(endText, kTurnBack)};
}
