#pragma once

#include "posix/filedescriptor.h"

#include <string>

namespace scnsim {

/// A raw pseudo-terminal behind a symbolic link, in place of a serial port. It keeps the client's
/// side open, so that clients may come and go, and removes the link when destroyed.
class PseudoTerminal
{
public:
    PseudoTerminal() = default;
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal();

    /// @param link the path to put the link at; a link that is there is replaced, nothing else is
    /// @return false with a text in error
    bool open(const std::string& link, std::string& error);

    /// Opens a new line and points the link at it, after the old one broke.
    bool renew(std::string& error);

    /// Removes the link or restores it; does nothing before open().
    void setLinked(bool linked);

    /// The absolute path of the link.
    const std::string& link() const { return m_link; }

    bool hasStream() const { return m_ownSide.isOpen(); }
    /// Hands over our side of the line, non-blocking.
    scn::FileDescriptor takeStream();

private:
    bool openLine(std::string& error);
    bool makeLink(const std::string& link, std::string& error);
    void removeLink();

    scn::FileDescriptor m_ownSide;
    scn::FileDescriptor m_clientSide;
    std::string m_device;
    std::string m_link;
    bool m_linked = false;
};

} // namespace scnsim
