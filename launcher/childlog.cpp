#include "launcher/childlog.h"

#include "launcher/place/resourceidentity.h"

#include <QDir>
#include <QFileInfo>

namespace scnlauncher {
namespace {

QString rotatedName(const QString& path, int age)
{
    return age == 0 ? path : path + QLatin1Char('.') + QString::number(age);
}

} // namespace

ChildLog::ChildLog(const QString& path)
    : ChildLog(path, Limits())
{
}

ChildLog::ChildLog(const QString& path, const Limits& limits)
    : m_limits(limits)
    , m_file(path)
{
}

bool ChildLog::write(const QByteArray& line)
{
    if (!open()) {
        return false;
    }
    if (m_file.size() > 0 && m_file.size() + line.size() >= m_limits.bytes) {
        rotate();
        if (!open()) {
            return false;
        }
    }
    return m_file.write(line + '\n') == line.size() + 1 && m_file.flush();
}

bool ChildLog::open()
{
    if (m_file.isOpen()) {
        return true;
    }
    QDir().mkpath(QFileInfo(m_file).path());
    return m_file.open(QIODevice::WriteOnly | QIODevice::Append);
}

void ChildLog::rotate()
{
    m_file.close();
    const QString path = m_file.fileName();
    QFile::remove(rotatedName(path, m_limits.files - 1));
    for (int age = m_limits.files - 1; age > 0; --age) {
        QFile::rename(rotatedName(path, age - 1), rotatedName(path, age));
    }
}

QString logPathFor(const QString& name)
{
    // The folder for state that is not worth a backup; Qt has no name for it.
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty()) {
        state = QDir::homePath() + QStringLiteral("/.local/state");
    }
    return state + QStringLiteral("/scn4070a/") + readableName(name) + QStringLiteral(".log");
}

} // namespace scnlauncher
