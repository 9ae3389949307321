#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>

#include <chrono>

/// The clock of this thread's animations while it lives: it stands still unless it is moved by hand.
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

    /// Lets so much time pass for the animations under way.
    void pass(std::chrono::milliseconds time)
    {
        settle();
        m_elapsed += time;
        advanceAnimation();
        settle();
    }

protected:
    /// The first animation begins: the time counts from here.
    void start() override
    {
        m_elapsed = m_elapsed.zero();
        QAnimationDriver::start();
    }

private:
    /// An animation begins in two steps, each of them an event, and is taken for ended by one more.
    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }

    std::chrono::milliseconds m_elapsed{0};
};
