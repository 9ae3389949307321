#pragma once

#include <QLineEdit>

/// A line edit that reports what the user typed once, when he is done with it.
class CustomLineEdit : public QLineEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomLineEdit)

public:
    explicit CustomLineEdit(QWidget* parent = nullptr);
    explicit CustomLineEdit(const QString& text, QWidget* parent = nullptr);

public slots:
    /// Notes that the user, not the program, changed the text.
    void onTextEdited(const QString& text);

    /// Reports a text that the user changed; typing on starts a new change.
    void onReturnPressed();

signals:
    /// The user left the edit or pressed Return, and the text is another than when he came.
    void textChangedAndFocusOut(const QString& text);

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QString m_textAtFocusIn;
    bool m_edited = false;
};
