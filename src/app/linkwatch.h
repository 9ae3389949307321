#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

class GuiGate;
enum class ExchangeResult;

/// The exchanges of one search for modules or one read-back, as long as there is a point in them:
/// until the window goes or is told to, the connection is reported lost, or replies have been
/// missing one after another for more than a minute. What is asked or shown after that is dropped.
/// Used on one thread, the GUI thread or a helper.
class LinkWatch
{
public:
    explicit LinkWatch(std::shared_ptr<GuiGate> gate);

    /// One exchange; an empty reply also when there is none any more.
    QString ask(const QString& command);

    /// The exchanges of several commands in one go; the replies are not used. False when all of
    /// them timed out.
    bool askAll(const QStringList& commands);

    /// Runs a step on the GUI thread and waits for it.
    void show(const std::function<void()>& step) const;

    /// The same, also when the exchanges have ended for want of replies.
    void undo(const std::function<void()>& step) const;

    bool goesOn() const;

    /// True when the exchanges have ended for want of replies.
    bool isLost() const { return m_isLost; }

private:
    void note(ExchangeResult result, const QString& command);

    const std::shared_ptr<GuiGate> m_gate;
    std::chrono::milliseconds m_silence{0};
    bool m_isLost = false;
};
