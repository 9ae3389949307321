#pragma once

#include <QEvent>
#include <QObject>

/// Counts the events of one type that an object receives; they still reach it.
class EventCounter : public QObject
{
public:
    EventCounter(QObject* watched, QEvent::Type type)
        : m_type(type)
    {
        watched->installEventFilter(this);
    }

    int count() const { return m_count; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_count += event->type() == m_type ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    const QEvent::Type m_type;
    int m_count = 0;
};
