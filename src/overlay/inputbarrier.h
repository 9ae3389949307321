#pragma once

#include <QObject>

#include <functional>

class QWidget;

/// Keeps keys and the wheel away from widgets that an overlay covers: the overlay itself only keeps
/// the mouse away, and keys go to whatever has the focus. The wheel still scrolls what lies around
/// a covered widget, and Tab leads out to the next widget that is not covered. It belongs to the
/// GUI thread.
class InputBarrier : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InputBarrier)

public:
    /// @param covers tells whether input for this widget is held back at the moment
    explicit InputBarrier(std::function<bool(const QWidget&)> covers);

    void raise();
    void lower();

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// True for the area, for what is in it, and for the popups of what is in it.
    static bool isWithin(const QWidget& widget, const QWidget* area);

private:
    void leaveBy(const QWidget& widget, bool backwards) const;

    std::function<bool(const QWidget&)> m_covers;
};
