#pragma once

#include <QDialog>

class QLabel;
class QTimer;

/// The program's message box: one line that does not block the user and closes itself. A longer text,
/// such as the paths of files, is wrapped and, if it must be, elided in the middle. A new message
/// replaces the current one.
class CustomMessageDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomMessageDialog)

public:
    enum Kind { Warning, Error, Information };

    /// The only box of the process, created on the first call as a child of `parent`. If the parent has
    /// been deleted, and the box with it, the next call creates another one.
    static CustomMessageDialog* instance(QWidget* parent);

    /// Shows a message.
    /// @param kind one of Kind; anything else counts as a warning.
    /// @param msec how long it stays, in ms; with 0 or less it stays until the user closes it.
    void showMessage(const QString& text, int kind, int msec);

private:
    explicit CustomMessageDialog(QWidget* parent);

    QLabel* m_iconLabel;
    QLabel* m_textLabel;
    QTimer* m_hideTimer;
};
