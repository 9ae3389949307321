#include "launcher/launchersettings.h"

#include "launcher/place/resourceidentity.h"

#include <QSettings>
#include <QStandardPaths>

namespace scnlauncher {
namespace {

const QString kGeometry = QStringLiteral("window/geometry");
const QString kRecent = QStringLiteral("resources/recent");
const QString kDays = QStringLiteral("runs/days");
const QString kRuns = QStringLiteral("runs/count");
const QString kMegabytes = QStringLiteral("runs/megabytes");

/// A resource may have characters that part groups.
QString rateKeyOf(const QString& resource)
{
    return QStringLiteral("rates/") + readableName(resource);
}

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

void LauncherSettings::remember(const InstrumentChoice& choice) const
{
    QStringList recent = recentResources();
    recent.removeAll(choice.resource);
    recent.prepend(choice.resource);
    QSettings settings(m_file, QSettings::IniFormat);
    settings.setValue(kRecent, QStringList(recent.mid(0, kMostRecent)));
    if (choice.serialRate > 0) {
        settings.setValue(rateKeyOf(choice.resource), choice.serialRate);
    }
}

void LauncherSettings::forget(const QString& resource) const
{
    QStringList recent = recentResources();
    recent.removeAll(resource);
    QSettings settings(m_file, QSettings::IniFormat);
    settings.setValue(kRecent, recent);
    settings.remove(rateKeyOf(resource));
}

int LauncherSettings::serialRate(const QString& resource) const
{
    return QSettings(m_file, QSettings::IniFormat).value(rateKeyOf(resource)).toInt();
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
