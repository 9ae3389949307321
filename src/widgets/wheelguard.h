#pragma once

#include <QObject>

class QWidget;

namespace scn {

/// Keeps the wheel from changing a box that merely lies under the pointer: a control takes the wheel
/// only while it has the focus, from a click or a key; otherwise the page scrolls.
class WheelGuard : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WheelGuard)

public:
    /// Guards a control for as long as it lives. GUI thread.
    static void install(QWidget* control);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit WheelGuard(QWidget* control);
};

} // namespace scn
