#include "launcher/ownership.h"

#include "launcher/place/resourceidentity.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

namespace scnlauncher {
namespace {

/// A file that its owner deletes while another opens it is tried again, this often.
constexpr int kTries = 100;
constexpr int kLongestOwner = 8192;
constexpr int kHashDigits = 8;
/// Everybody locks and signs the files of everybody.
constexpr mode_t kFileMode = 0666;

bool isRunning(qint64 processId)
{
    return processId > 0 && (::kill(static_cast<pid_t>(processId), 0) == 0 || errno == EPERM);
}

QString userName()
{
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr ? QString::fromLocal8Bit(user->pw_name) : QString::number(::getuid());
}

/// The hash keeps names apart that are readable alike.
QString fileName(const QString& thing)
{
    const QByteArray hash =
        QCryptographicHash::hash(thing.toUtf8(), QCryptographicHash::Sha1).toHex();
    return QStringLiteral("/scn4070a-%1-%2.lock")
        .arg(readableName(thing), QString::fromLatin1(hash.constData(), kHashDigits));
}

} // namespace

Owner Owner::self(const QString& place)
{
    Owner owner;
    owner.processId = ::getpid();
    owner.user = userName();
    owner.program = QCoreApplication::applicationName();
    owner.place = place;
    owner.since = QDateTime::currentDateTime();
    return owner;
}

bool Owner::isLeftOver() const
{
    return processId != 0 && !isRunning(processId) && isRunning(childProcessId);
}

QString Owner::description() const
{
    if (processId == 0) {
        return QStringLiteral("另一个程序");
    }
    return QStringLiteral("%1（进程 %2，用户 %3，自 %4 起，目录 %5）")
        .arg(isLeftOver() ? QStringLiteral("scn4070a") : program,
             QString::number(isLeftOver() ? childProcessId : processId), user,
             since.toString(QStringLiteral("yyyy-MM-dd HH:mm")), place);
}

Ownership::Ownership(QString lockFolder)
    : m_lockFolder(std::move(lockFolder))
{
}

Ownership::~Ownership()
{
    release();
}

QString Ownership::commonLockFolder()
{
    const QString set = qEnvironmentVariable("SCN4070A_LOCK_FOLDER");
    for (const QString& folder : {set, QStringLiteral("/run/lock")}) {
        if (!folder.isEmpty() &&
            ::access(QFile::encodeName(folder).constData(), W_OK | X_OK) == 0) {
            return folder;
        }
    }
    return QStringLiteral("/tmp");
}

Ownership::Result Ownership::take(const QString& thing, const Owner& self)
{
    release();
    m_errorText.clear();
    m_other = {};
    m_path = m_lockFolder + fileName(thing);
    for (int i = 0; i < kTries; ++i) {
        if (!openFile()) {
            return Result::Failed;
        }
        const Result result = lockFile();
        if (result != Result::Failed && !isFileInPlace()) {
            continue;
        }
        if (result == Result::Taken) {
            sign(self);
        } else {
            m_file = {};
        }
        return result;
    }
    m_file = {};
    fail(EAGAIN);
    return Result::Failed;
}

bool Ownership::openFile()
{
    // A file of another user in a folder of all users may be opened, but not with O_CREAT.
    constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const QByteArray path = QFile::encodeName(m_path);
    for (int i = 0; i < kTries; ++i) {
        m_file = scn::FileDescriptor(::open(path.constData(), kFlags));
        if (m_file.isOpen() || errno != ENOENT) {
            break;
        }
        m_file =
            scn::FileDescriptor(::open(path.constData(), kFlags | O_CREAT | O_EXCL, kFileMode));
        if (m_file.isOpen()) {
            ::fchmod(m_file.get(), kFileMode);
            break;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    if (!m_file.isOpen()) {
        fail(errno);
    }
    return m_file.isOpen();
}

Ownership::Result Ownership::lockFile()
{
    struct stat file = {};
    if (::fstat(m_file.get(), &file) != 0 || !S_ISREG(file.st_mode) || file.st_nlink > 1) {
        fail(EINVAL);
        return Result::Failed;
    }
    if (::flock(m_file.get(), LOCK_EX | LOCK_NB) == 0) {
        return Result::Taken;
    }
    if (errno == EWOULDBLOCK) {
        m_other = readOwner();
        return Result::HeldByOther;
    }
    fail(errno);
    return Result::Failed;
}

bool Ownership::isFileInPlace() const
{
    struct stat file = {};
    struct stat place = {};
    return ::fstat(m_file.get(), &file) == 0 &&
           ::lstat(QFile::encodeName(m_path).constData(), &place) == 0 &&
           file.st_dev == place.st_dev && file.st_ino == place.st_ino;
}

void Ownership::release()
{
    if (!m_file.isOpen()) {
        return;
    }
    // A child that runs on holds the file open: it is deleted only if the lock is free then.
    m_file = {};
    m_file = scn::FileDescriptor(::open(QFile::encodeName(m_path).constData(),
                                        O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (m_file.isOpen() && ::flock(m_file.get(), LOCK_EX | LOCK_NB) == 0 && isFileInPlace()) {
        QFile::remove(m_path);
    }
    m_file = {};
}

void Ownership::passOn() const
{
    if (m_file.isOpen()) {
        ::fcntl(m_file.get(), F_SETFD, 0);
    }
}

void Ownership::sign(const Owner& self) const
{
    const QByteArray text =
        QJsonDocument(QJsonObject{
                          {QStringLiteral("process"), self.processId},
                          {QStringLiteral("child"), self.childProcessId},
                          {QStringLiteral("user"), self.user},
                          {QStringLiteral("program"), self.program},
                          {QStringLiteral("place"), self.place},
                          {QStringLiteral("since"), self.since.toString(Qt::ISODate)},
                      })
            .toJson(QJsonDocument::Compact);
    // Who cannot sign, on a full disk, holds the lock all the same.
    if (::ftruncate(m_file.get(), 0) == 0) {
        [[maybe_unused]] const ssize_t written =
            ::pwrite(m_file.get(), text.constData(), static_cast<size_t>(text.size()), 0);
    }
}

Owner Ownership::readOwner() const
{
    std::array<char, kLongestOwner> text;
    const ssize_t length = ::pread(m_file.get(), text.data(), text.size(), 0);
    const QJsonObject object =
        QJsonDocument::fromJson(QByteArray(text.data(), static_cast<int>(qMax<ssize_t>(length, 0))))
            .object();
    Owner owner;
    owner.processId = object[QStringLiteral("process")].toVariant().toLongLong();
    owner.childProcessId = object[QStringLiteral("child")].toVariant().toLongLong();
    owner.user = object[QStringLiteral("user")].toString();
    owner.program = object[QStringLiteral("program")].toString();
    owner.place = object[QStringLiteral("place")].toString();
    owner.since = QDateTime::fromString(object[QStringLiteral("since")].toString(), Qt::ISODate);
    return owner;
}

void Ownership::fail(int error)
{
    m_errorText = QStringLiteral("无法使用锁文件 %1：%2。请删除该文件，或询问系统管理员。")
                      .arg(m_path, QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace scnlauncher
