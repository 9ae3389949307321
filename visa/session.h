#pragma once

#include "visa/transport.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace scn::visa {

/// One open instrument session: the attributes, the bytes that have come in and are not read yet,
/// and the rules by which a read ends. Every operation may be called on any thread; a read and a
/// write may be under way at the same time, and no lock is held while a thread waits.
class Session
{
public:
    explicit Session(std::unique_ptr<Transport> transport);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    ViStatus setAttribute(ViAttr attribute, ViAttrState value);

    /// Reads one message: up to and with the termination character where that is enabled, else
    /// until the buffer is full. What came behind it stays for the next read. On a failure the
    /// bytes that did come are handed over with it.
    ViStatus read(char* buffer, std::size_t size, std::size_t& received);

    /// Throws away the input that is waiting, then writes all bytes. A reply that came too late
    /// is so never taken for the reply to what is written now.
    ViStatus write(const char* bytes, std::size_t size, std::size_t& sent);

    /// Ends what other threads are doing on the session; they report VI_ERROR_ABORT.
    void close();

private:
    class WriteTurn;

    Deadline nextDeadline() const;
    std::optional<ViStatus> tryRead(char* buffer, std::size_t size, std::size_t& received,
                                    bool hungUp);
    std::optional<ViStatus> takeMessage(char* buffer, std::size_t size, std::size_t& received);
    void take(char* buffer, std::size_t size, std::size_t& received);
    void takeRest(char* buffer, std::size_t size, std::size_t& received);
    Transport::State fetchInput();
    ViStatus discardInput();
    std::optional<ViStatus> tryWrite(const char* bytes, std::size_t size, std::size_t& sent,
                                     bool hungUp);
    ViStatus failure(Transport::State state);

    const std::unique_ptr<Transport> m_transport;
    /// Guards all below and every moving of bytes; never held over a wait.
    mutable std::mutex m_mutex;
    ViUInt32 m_timeoutMs;
    char m_terminator;
    bool m_terminatorEnabled = false;
    bool m_writing = false;
    bool m_lost = false;
    std::string m_input;
};

} // namespace scn::visa
