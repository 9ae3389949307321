#pragma once

#include <QString>

class CustomComboBox;
class CustomDialog;
class QAbstractButton;
class QLabel;
class QLineEdit;

/// The export dialog as its user operates it.
struct ExportDialogHand
{
    explicit ExportDialogHand(CustomDialog* dialog)
        : window(dialog)
    {
    }

    QLabel* label(const QString& text) const;
    QAbstractButton* button(const QString& text) const;
    QAbstractButton* browse() const;
    QAbstractButton* toFile() const;
    QAbstractButton* close() const;
    CustomComboBox* separator() const;
    QLineEdit* name() const;

    /// The label of the directory, beside its title.
    QLabel* directory() const;

    /// Chooses a directory with the button; an empty one cancels with Escape.
    void chooseDirectory(const QString& path) const;

    CustomDialog* window;
};
