#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

namespace scn {

class GuiGate;
enum class ExchangeResult;

/// Carries the exchanges of a module search or a read-back until the window closes, the connection is reported
/// lost, or replies have been missing without a break for more than a minute. After that it asks and shows
/// nothing. Used by one thread, the GUI thread or a helper.
class LinkWatch
{
public:
    /// Replies may be missing for this long.
    static constexpr std::chrono::seconds kLongestSilence{60};

    explicit LinkWatch(std::shared_ptr<GuiGate> gate);

    /// Makes one exchange. Returns an empty reply on failure and after the end.
    QString ask(const QString& command);

    /// Makes the exchanges of several commands; their replies are not used. Returns false if all of them
    /// timed out.
    bool askAll(const QStringList& commands);

    /// Runs a step on the GUI thread and waits for it.
    void show(const std::function<void()>& step) const;

    /// The same, but also after a loss.
    void undo(const std::function<void()>& step) const;

    bool goesOn() const;

    /// True after a reported loss or the minute without replies.
    bool isLost() const { return m_isLost; }

private:
    void note(ExchangeResult result, const QString& command);

    const std::shared_ptr<GuiGate> m_gate;
    std::chrono::milliseconds m_silence{0};
    bool m_isLost = false;
};

} // namespace scn
