#pragma once

#include <QDialog>

class QLabel;
class QTimer;

/// The program's one message box: one line that does not stop work and closes itself. A text that is
/// too long for a line, such as the paths of files, is wrapped, and cut in its middle if need be.
/// A new message takes the place of the one on show.
class CustomMessageDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomMessageDialog)

public:
    /// The one box of the process, made on the first call as a child of its parent. Should that
    /// parent have been deleted, and the box with it, the next call makes a new one.
    static CustomMessageDialog* instance(QWidget* parent);

    /// Shows the text.
    /// @param kind 0 warning, 1 error, 2 information; anything else counts as a warning.
    /// @param msec how long it stays, in ms; 0 or less leaves it open until the user closes it.
    void showMessage(const QString& text, int kind, int msec);

private:
    explicit CustomMessageDialog(QWidget* parent);

    QLabel* m_iconLabel;
    QLabel* m_textLabel;
    QTimer* m_hideTimer;
};
