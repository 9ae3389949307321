#pragma once

#include "visa/usbdevice.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace scn::visa {

/// A USB instrument with its driver: it blocks as the driver does, and answers as it is told to. Any
/// thread may tell it.
class FakeUsbDevice : public UsbDevice
{
public:
    struct Part
    {
        QByteArray bytes;
        bool endsMessage;
    };

    ~FakeUsbDevice() override { *m_isGone = true; }

    /// Set once the device is deleted.
    std::shared_ptr<std::atomic<bool>> watchEnd() const { return m_isGone; }

    /// What it answers to a message.
    void answer(const QByteArray& message, const QList<Part>& parts)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_answers.insert(message, parts);
    }

    /// Brings a part of a message, asked for or not.
    void bring(const Part& part)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_parts.append(part);
        m_changed.notify_all();
    }

    /// How transfers end from now on, if not as they should.
    void endReceptions(Outcome outcome)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_receptionOutcome = outcome;
    }
    void endSends(Outcome outcome)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_sendOutcome = outcome;
    }
    /// Like a driver whose time-out cannot be set.
    void ignoreTimeouts()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ignoresTimeouts = true;
    }

    QList<QByteArray> sent() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_sent;
    }
    int clears() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_clears;
    }
    std::chrono::milliseconds timeout() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_timeout;
    }

    void setTimeout(std::chrono::milliseconds timeout) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_timeout = timeout;
    }

    Reception receive(char* buffer, std::size_t size) override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_receptionOutcome != Outcome::Done) {
            return {m_receptionOutcome, 0, false};
        }
        const auto hasPart = [this] { return !m_parts.isEmpty(); };
        if (m_ignoresTimeouts) {
            m_changed.wait(lock, hasPart);
        } else if (!m_changed.wait_for(lock, m_timeout, hasPart)) {
            return {Outcome::TimedOut, 0, false};
        }
        const Part part = m_parts.takeFirst();
        const std::size_t count = std::min(size, static_cast<std::size_t>(part.bytes.size()));
        std::copy_n(part.bytes.constData(), count, buffer);
        return {Outcome::Done, count, part.endsMessage};
    }

    Outcome send(const char* bytes, std::size_t size) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const QByteArray message(bytes, static_cast<int>(size));
        m_sent.append(message);
        m_parts.append(m_answers.value(message));
        return m_sendOutcome;
    }

    void clear() override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_clears;
        m_parts.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    QHash<QByteArray, QList<Part>> m_answers;
    QList<Part> m_parts;
    QList<QByteArray> m_sent;
    Outcome m_receptionOutcome = Outcome::Done;
    Outcome m_sendOutcome = Outcome::Done;
    std::chrono::milliseconds m_timeout{0};
    bool m_ignoresTimeouts = false;
    int m_clears = 0;
    const std::shared_ptr<std::atomic<bool>> m_isGone = std::make_shared<std::atomic<bool>>(false);
};

} // namespace scn::visa
