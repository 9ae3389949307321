#pragma once

#include <QString>
#include <QWidget>

#include <memory>

class QKeyEvent;
class QLineEdit;

namespace scn {
class ArrowCell;
class DigitEdit;
} // namespace scn

/// One field of digits of a duration, with a title at rest and two arrows while it is edited.
class TimeColumn : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TimeColumn)

public:
    /// @param min smallest value, and the first one
    /// @param digits width of the field; shorter numbers get leading zeros
    /// @param separator text before the digits
    /// @param first the leftmost column, which shows no separator
    TimeColumn(const QString& title, int min, int max, int digits, const QString& separator,
               bool first, QWidget* parent = nullptr);
    ~TimeColumn() override;

    int value() const { return m_value; }
    int minimum() const { return m_min; }
    int maximum() const { return m_max; }

    /// Takes the value, brought into the range. A value that is there already changes nothing.
    void setValue(int value);

    /// Stores both limits and brings the value into them.
    void setRange(int min, int max);

    /// Gives the focus to the digits, the cursor before the first or behind the last one.
    void focusFirstDigit();
    void focusBehindLastDigit();

public slots:
    void inc();
    void dec();

signals:
    void valueChanged(int value);
    /// The user went on behind the last digit, or back before the first.
    void focusNext();
    void focusPrev();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private slots:
    void onTextChanged(const QString& text);
    void onEditingFinished();

private:
    void buildTop(const QString& title);
    QWidget* buildRow();
    void showArrows(bool on);
    void updateWidth();
    bool handleEditKey(const QKeyEvent& event);
    void typeDigit(QChar digit);

    int m_min;
    int m_max;
    int m_value;
    int m_digits;
    std::unique_ptr<scn::ArrowCell> m_top;
    std::unique_ptr<scn::DigitEdit> m_digitEdit;
    QLineEdit* m_edit = nullptr; ///< of m_digitEdit
    std::unique_ptr<scn::ArrowCell> m_bottom;
    QString m_separator;
    bool m_first;
};
