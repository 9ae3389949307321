#pragma once

#include <QObject>

#include <functional>

class QWidget;

namespace scn {

/// Keeps keys and the wheel away from covered widgets: an overlay itself only blocks the mouse, and
/// keys go to whatever has the focus. The wheel still scrolls what surrounds a covered widget, and
/// Tab leads out to the next uncovered one. GUI thread.
class InputBarrier : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InputBarrier)

public:
    /// @param covers whether input for this widget is blocked at the moment
    explicit InputBarrier(std::function<bool(const QWidget&)> covers);

    void raise();
    void lower();

    /// An open list or panel of a covered widget would be on top of its cover.
    void closePopups();

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// True for the area, its contents, and their popups.
    static bool isWithin(const QWidget& widget, const QWidget* area);

private:
    void leaveBy(const QWidget& widget, bool backwards) const;

    std::function<bool(const QWidget&)> m_covers;
};

} // namespace scn
