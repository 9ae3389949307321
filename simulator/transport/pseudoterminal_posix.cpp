#include "transport/pseudoterminal.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace scnsim {

namespace {

bool makeRaw(int descriptor)
{
    termios settings = {};
    if (tcgetattr(descriptor, &settings) != 0) {
        return false;
    }
    cfmakeraw(&settings);
    return tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

} // namespace

PseudoTerminal::~PseudoTerminal()
{
    removeLink();
}

bool PseudoTerminal::open(const std::string& link, std::string& error)
{
    return openLine(error) && makeLink(link, error);
}

bool PseudoTerminal::renew(std::string& error)
{
    const bool linked = m_linked;
    removeLink();
    return openLine(error) && (!linked || makeLink(m_link, error));
}

void PseudoTerminal::setLinked(bool linked)
{
    if (m_link.empty() || linked == m_linked) {
        return;
    }
    if (linked) {
        std::string ignored;
        makeLink(m_link, ignored);
    } else {
        removeLink();
    }
}

scn::FileDescriptor PseudoTerminal::takeStream()
{
    return std::move(m_ownSide);
}

bool PseudoTerminal::openLine(std::string& error)
{
    // Frees the old line's descriptors for the new one.
    m_clientSide = scn::FileDescriptor();
    m_ownSide = scn::FileDescriptor(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    const bool unlocked =
        m_ownSide.isOpen() && grantpt(m_ownSide.get()) == 0 && unlockpt(m_ownSide.get()) == 0;
    if (const char* const name = unlocked ? ptsname(m_ownSide.get()) : nullptr) {
        m_device = name;
        m_clientSide = scn::FileDescriptor(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
    }
    if (!m_clientSide.isOpen() || !makeRaw(m_clientSide.get())) {
        error = std::string("cannot open a pseudo-terminal: ") + std::strerror(errno);
        return false;
    }
    return true;
}

bool PseudoTerminal::makeLink(const std::string& link, std::string& error)
{
    std::error_code failure;
    const std::filesystem::path path = std::filesystem::absolute(link, failure);
    if (std::filesystem::is_symlink(path, failure)) {
        std::filesystem::remove(path, failure);
    }
    std::filesystem::create_symlink(m_device, path, failure);
    if (failure) {
        error = "cannot make the link " + path.string() + ": " + failure.message();
        return false;
    }
    m_link = path.string();
    m_linked = true;
    return true;
}

/// Only our own link: someone may have put another in its place.
void PseudoTerminal::removeLink()
{
    std::error_code ignored;
    if (m_linked && std::filesystem::read_symlink(m_link, ignored) == m_device) {
        std::filesystem::remove(m_link, ignored);
    }
    m_linked = false;
}

} // namespace scnsim
