#pragma once

#include <QLineEdit>

/// A line edit that reports what the user typed once, when editing is finished.
class CustomLineEdit : public QLineEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomLineEdit)

public:
    explicit CustomLineEdit(QWidget* parent = nullptr);
    explicit CustomLineEdit(const QString& text, QWidget* parent = nullptr);

public slots:
    /// Marks the text as changed by the user rather than by the program.
    void onTextEdited(const QString& text);

    /// Reports a text that the user has changed. Further typing counts as a new change.
    void onReturnPressed();

signals:
    /// The user changed the text and left the edit or pressed Return.
    void textChangedAndFocusOut(const QString& text);

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QString m_textAtFocusIn;
    bool m_edited = false;
};
