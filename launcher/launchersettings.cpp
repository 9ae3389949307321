#include "launcher/launchersettings.h"

#include <QSettings>
#include <QStandardPaths>

namespace scnlauncher {
namespace {

const QString kGeometry = QStringLiteral("window/geometry");
const QString kRecent = QStringLiteral("resources/recent");
const QString kSerialRate = QStringLiteral("resources/serialRate");
const QString kDays = QStringLiteral("runs/days");
const QString kRuns = QStringLiteral("runs/count");
const QString kMegabytes = QStringLiteral("runs/megabytes");

} // namespace

QString LauncherSettings::path()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/scn4070a/launcher.ini");
}

LauncherSettings::LauncherSettings(const QString& file)
    : m_file(file)
{
}

QByteArray LauncherSettings::geometry() const
{
    return QSettings(m_file, QSettings::IniFormat).value(kGeometry).toByteArray();
}

void LauncherSettings::setGeometry(const QByteArray& geometry) const
{
    QSettings(m_file, QSettings::IniFormat).setValue(kGeometry, geometry);
}

QStringList LauncherSettings::recentResources() const
{
    return QSettings(m_file, QSettings::IniFormat)
        .value(kRecent)
        .toStringList()
        .mid(0, kMostRecent);
}

void LauncherSettings::addRecentResource(const QString& resource) const
{
    QStringList recent = recentResources();
    recent.removeAll(resource);
    recent.prepend(resource);
    QSettings(m_file, QSettings::IniFormat)
        .setValue(kRecent, QStringList(recent.mid(0, kMostRecent)));
}

int LauncherSettings::serialRate() const
{
    return QSettings(m_file, QSettings::IniFormat).value(kSerialRate).toInt();
}

void LauncherSettings::setSerialRate(int rate) const
{
    QSettings(m_file, QSettings::IniFormat).setValue(kSerialRate, rate);
}

RunLimits LauncherSettings::runLimits() const
{
    const QSettings settings(m_file, QSettings::IniFormat);
    return {settings.value(kDays).toInt(), settings.value(kRuns).toInt(),
            settings.value(kMegabytes).toInt()};
}

void LauncherSettings::setRunLimits(const RunLimits& limits) const
{
    QSettings settings(m_file, QSettings::IniFormat);
    settings.setValue(kDays, limits.days);
    settings.setValue(kRuns, limits.runs);
    settings.setValue(kMegabytes, limits.megabytes);
}

} // namespace scnlauncher
