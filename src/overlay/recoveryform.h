#pragma once

#include <QCoreApplication>

class QLabel;
class QPushButton;
class QWidget;

namespace scn {

/// What an overlay shows after the link was lost: a text, and the button that starts the recovery. Both are
/// children of the overlay. GUI thread.
class RecoveryForm
{
    Q_DECLARE_TR_FUNCTIONS(LoadingView)

public:
    explicit RecoveryForm(QWidget* overlay);

    QPushButton* button() const { return m_button; }

    void show();
    void hide();

    /// Fits both to the overlay's size, unless they are hidden.
    void place();

private:
    void placeLabel();

    QWidget* m_overlay;
    QLabel* m_label;
    QPushButton* m_button;
};

} // namespace scn
