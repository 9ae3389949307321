#pragma once

#include <QObject>

class QWidget;

/// Keeps the wheel from changing a box or spin box that the pointer only happens to stand over: the
/// control takes the wheel while it has the focus, which a click or a key gives it; otherwise the page
/// scrolls.
class WheelGuard : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WheelGuard)

public:
    /// Guards a control for its lifetime. GUI thread only.
    static void install(QWidget* control);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit WheelGuard(QWidget* control);
};
