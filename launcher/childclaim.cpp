#include "launcher/childclaim.h"

#include "launcher/place/resourceidentity.h"

#include <QDir>
#include <QFileInfo>

namespace scnlauncher {
namespace {

/// Folders of the user for children that share a name.
constexpr int kFoldersOfOneName = 99;

QString folderThing(const QString& folder)
{
    const QString real = QFileInfo(folder).canonicalFilePath();
    return QStringLiteral("folder ") + (real.isEmpty() ? folder : real);
}

} // namespace

ChildClaim::ChildClaim(const QString& lockFolder)
    : m_resource(lockFolder)
    , m_folder(lockFolder)
{
}

bool ChildClaim::take(const QString& program, const QString& resource, const QString& name)
{
    release();
    m_errorText.clear();
    if (!QFileInfo(program).isFile()) {
        m_errorText = QStringLiteral("找不到程序 %1，请重新安装它。").arg(program);
        return false;
    }
    m_self = Owner::self({});
    if (!takeResource(resource)) {
        return false;
    }
    m_isBesideProgram = takeBeside(program);
    if (m_isBesideProgram || takePerUser(program, name)) {
        m_resource.sign(m_self);
        return true;
    }
    release();
    return false;
}

bool ChildClaim::takeResource(const QString& resource)
{
    switch (m_resource.take(resourceIdentity(resource), m_self)) {
    case Ownership::Result::Taken:
        return true;
    case Ownership::Result::HeldByOther:
        m_errorText =
            (m_resource.other().isLeftOver()
                 ? QStringLiteral("仪器 %1 正被 %2 使用。它没有窗口，仍在记录；请先复制数据，再用 "
                                  "kill 命令结束该进程，或选择其他仪器。")
                 : QStringLiteral("仪器 %1 正被 %2 使用。请先关闭它，或选择其他仪器。"))
                .arg(resource.section(QLatin1Char(';'), 0, 0), m_resource.other().description());
        break;
    case Ownership::Result::Failed:
        m_errorText = m_resource.errorText();
        break;
    }
    return false;
}

bool ChildClaim::takeBeside(const QString& program)
{
    const QString folder = QFileInfo(program).canonicalPath();
    m_self.place = folder;
    if (!takesData(folder) ||
        m_folder.take(folderThing(folder), m_self) != Ownership::Result::Taken) {
        return false;
    }
    m_place = {QFileInfo(program).canonicalFilePath(), folder, {}};
    return true;
}

bool ChildClaim::takePerUser(const QString& program, const QString& name)
{
    const QString first = perUserFolder(name);
    if (first.isEmpty()) {
        m_errorText = QStringLiteral(
            "程序目录不可写，而当前用户没有主目录，数据无处存放。请设置 HOME 或 XDG_DATA_HOME。");
        return false;
    }
    for (int number = 1; number <= kFoldersOfOneName; ++number) {
        const QString folder = number == 1 ? first : QStringLiteral("%1-%2").arg(first).arg(number);
        // The folder is there before it is locked, for its real path.
        QDir().mkpath(folder);
        m_self.place = folder;
        const Ownership::Result result = m_folder.take(folderThing(folder), m_self);
        if (result == Ownership::Result::Failed) {
            m_errorText = m_folder.errorText();
            return false;
        }
        if (result == Ownership::Result::Taken) {
            m_place = copiedProgram(program, folder);
            m_errorText = m_place.errorText;
            if (m_errorText.isEmpty()) {
                return true;
            }
            QDir().rmdir(folder);
            return false;
        }
    }
    m_errorText = QStringLiteral("数据目录 %1 正被 %2 使用。请先关闭它。")
                      .arg(first, m_folder.other().description());
    return false;
}

void ChildClaim::release()
{
    m_resource.release();
    m_folder.release();
    m_place = {};
}

void ChildClaim::noteChild(qint64 processId)
{
    m_self.childProcessId = processId;
    m_resource.sign(m_self);
    m_folder.sign(m_self);
}

void ChildClaim::passOn() const
{
    m_resource.passOn();
    m_folder.passOn();
}

} // namespace scnlauncher
