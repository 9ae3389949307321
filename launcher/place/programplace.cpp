#include "launcher/place/programplace.h"

#include "launcher/place/resourceidentity.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <filesystem>
#include <system_error>

namespace scnlauncher {
namespace {

constexpr qint64 kBlockBytes = 1 << 20;

std::filesystem::path pathOf(const QString& path)
{
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}

bool isSameContent(const QString& one, const QString& other)
{
    QFile first(one);
    QFile second(other);
    if (first.size() != second.size() || !first.open(QIODevice::ReadOnly) ||
        !second.open(QIODevice::ReadOnly)) {
        return false;
    }
    while (!first.atEnd()) {
        const QByteArray block = first.read(kBlockBytes);
        if (block.isEmpty() || block != second.read(kBlockBytes)) {
            return false;
        }
    }
    return true;
}

QString reasonOf(const std::error_code& error)
{
    if (error == std::errc::no_space_on_device) {
        return QStringLiteral("磁盘已满");
    }
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted) {
        return QStringLiteral("没有写入权限");
    }
    if (error == std::errc::read_only_file_system) {
        return QStringLiteral("文件系统是只读的");
    }
    return QString::fromLocal8Bit(error.message().c_str());
}

/// Links or copies the program under a name of its own and renames that.
std::error_code replaceCopy(const QString& program, const QString& copy)
{
    const std::filesystem::path source = pathOf(program);
    const std::filesystem::path fresh = pathOf(copy + QStringLiteral(".new"));
    std::error_code error;
    std::filesystem::remove(fresh, error);
    std::filesystem::create_hard_link(source, fresh, error);
    if (error) {
        std::filesystem::copy_file(source, fresh, error);
        // The library tells a full disk as a failed write.
        std::error_code ignored;
        if (error == std::errc::io_error &&
            std::filesystem::space(fresh.parent_path(), ignored).available <
                std::filesystem::file_size(source, ignored)) {
            error = std::make_error_code(std::errc::no_space_on_device);
        }
    }
    if (!error) {
        std::filesystem::rename(fresh, pathOf(copy), error);
    }
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(fresh, ignored);
    }
    return error;
}

ProgramPlace noPlace(const QString& why)
{
    return {{}, {}, why};
}

ProgramPlace noUsablePlace(const QString& why)
{
    return noPlace(why + QStringLiteral("请检查磁盘空间和权限，或用 XDG_DATA_HOME 指定其他位置。"));
}

} // namespace

QString companionProgram(const QString& name)
{
    const QDir folder(QCoreApplication::applicationDirPath());
    const QString installed =
        QDir::cleanPath(folder.filePath(QStringLiteral(SCN_PROGRAM_FOLDER "/") + name));
    const QString beside = folder.filePath(name);
    return !QFileInfo::exists(beside) && QFileInfo::exists(installed) ? installed : beside;
}

bool takesData(const QString& folder)
{
    const QString real = QDir(folder).canonicalPath() + QLatin1Char('/');
    if (real.startsWith(QLatin1String("/usr/"))) {
        return false;
    }
    // Only trying tells: a read-only file system shows in no mode bits.
    QTemporaryFile file(folder + QStringLiteral("/.scn4070a-XXXXXX"));
    return file.open();
}

QString perUserRoot()
{
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (!QDir::isAbsolutePath(data)) {
        const QString home = qEnvironmentVariable("HOME");
        if (!QDir::isAbsolutePath(home)) {
            return {};
        }
        data = home + QStringLiteral("/.local/share");
    }
    return QDir::cleanPath(data + QStringLiteral("/scn4070a"));
}

QString perUserFolder(const QString& name)
{
    const QString root = perUserRoot();
    return root.isEmpty() ? root : root + QLatin1Char('/') + readableName(name);
}

ProgramPlace copiedProgram(const QString& program, const QString& folder)
{
    if (!QFileInfo(program).isFile()) {
        return noPlace(QStringLiteral("找不到程序 %1，请重新安装它。").arg(program));
    }
    std::error_code error;
    std::filesystem::create_directories(pathOf(folder), error);
    if (error) {
        return noUsablePlace(
            QStringLiteral("无法创建数据目录 %1：%2。").arg(folder, reasonOf(error)));
    }
    const QString copy = folder + QLatin1Char('/') + QFileInfo(program).fileName();
    if (!isSameContent(program, copy)) {
        // A link is followed: it is the file that gets a second name.
        error = replaceCopy(QFileInfo(program).canonicalFilePath(), copy);
        if (error) {
            return noUsablePlace(
                QStringLiteral("无法将程序复制到 %1：%2。").arg(folder, reasonOf(error)));
        }
    }
    if (!takesData(folder)) {
        return noUsablePlace(QStringLiteral("数据目录 %1 不可写。").arg(folder));
    }
    if (!QFileInfo(copy).isExecutable()) {
        return noUsablePlace(QStringLiteral("目录 %1 不允许运行程序。").arg(folder));
    }
    return {copy, folder, {}};
}

} // namespace scnlauncher
