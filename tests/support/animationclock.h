#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>

#include <chrono>

/// Replaces the clock of this thread's animations: time stands still unless moved by hand.
class AnimationClock : public QAnimationDriver
{
public:
    AnimationClock() { install(); }
    ~AnimationClock() override
    {
        settle();
        uninstall();
    }
    Q_DISABLE_COPY_MOVE(AnimationClock)

    qint64 elapsed() const override { return m_elapsed.count(); }

    /// Advances the running animations by this much.
    void pass(std::chrono::milliseconds time)
    {
        settle();
        m_elapsed += time;
        advanceAnimation();
        settle();
    }

protected:
    /// The first animation starts: time counts from here.
    void start() override
    {
        m_elapsed = m_elapsed.zero();
        QAnimationDriver::start();
    }

private:
    /// An animation starts in two steps, each an event, and one more event ends it.
    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }

    std::chrono::milliseconds m_elapsed{0};
};
