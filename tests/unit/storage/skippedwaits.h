#pragma once

#include <QVector>

#include <chrono>
#include <functional>

/// Takes the store's waits away while it lives, and notes what was asked for. One at a time.
class SkippedWaits
{
public:
    SkippedWaits();
    ~SkippedWaits();
    SkippedWaits(const SkippedWaits&) = delete;
    SkippedWaits& operator=(const SkippedWaits&) = delete;

    /// The waits so far, in milliseconds, in order.
    QVector<int> asked() const;

    /// How often a wait of this length was asked for.
    int count(std::chrono::milliseconds wait) const;

    /// Forgets the waits so far.
    void forget();

    /// Gives how long a wait of the length asked for is really to take. Runs on the waiting thread.
    using Rule = std::function<std::chrono::milliseconds(std::chrono::milliseconds)>;

    /// From now on the rule decides; an empty one: no wait takes any time.
    void setRule(Rule rule);
};
