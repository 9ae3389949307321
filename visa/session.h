#pragma once

#include "visa/transport.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace scn::visa {

/// One open instrument session: its attributes, the input that nobody has read yet, and the rules
/// for the end of a read. Any thread may call any operation; a read and a write may run at the same
/// time, and no lock is held during a wait.
class Session
{
public:
    explicit Session(std::unique_ptr<Transport> transport);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    ViStatus setAttribute(ViAttr attribute, ViAttrState value);

    /// Reads one message: up to and including the termination character if that is enabled, up to the end
    /// that the transport tells, or until the buffer is full. Further input stays for the next read. A failed read
    /// still hands over the bytes that have arrived.
    ViStatus read(char* buffer, std::size_t size, std::size_t& received);

    /// Discards the pending input, then writes all bytes. A late reply is thus never taken for the
    /// answer to this message.
    ViStatus write(const char* bytes, std::size_t size, std::size_t& sent);

    /// Interrupts the operations of other threads on the session; they report VI_ERROR_ABORT.
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
    void forgetInput();
    std::optional<ViStatus> tryWrite(const char* bytes, std::size_t size, std::size_t& sent,
                                     bool hungUp);
    ViStatus failure(Transport::State state);

    const std::unique_ptr<Transport> m_transport;
    /// Guards everything below and every transfer; never held during a wait.
    mutable std::mutex m_mutex;
    ViUInt32 m_timeoutMs;
    char m_terminator;
    bool m_terminatorEnabled = false;
    bool m_writing = false;
    bool m_lost = false;
    std::string m_input;
    /// The input ends with the end of a message.
    bool m_endsMessage = false;
};

} // namespace scn::visa
