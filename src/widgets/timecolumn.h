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

/// One field of a duration, with a title at rest and two arrows while it is being edited.
class TimeColumn : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TimeColumn)

public:
    /// @param min smallest and initial value
    /// @param digits width of the field; shorter numbers get leading zeros
    /// @param separator text in front of the digits
    /// @param first true for the leftmost column, which shows no separator
    TimeColumn(const QString& title, int min, int max, int digits, const QString& separator,
               bool first, QWidget* parent = nullptr);
    ~TimeColumn() override;

    int value() const { return m_value; }
    int minimum() const { return m_min; }
    int maximum() const { return m_max; }

    /// Sets the value, clamped to the range.
    void setValue(int value);

    /// Sets both limits and clamps the value.
    void setRange(int min, int max);

    /// Focuses the digits, with the cursor before the first or after the last.
    void focusFirstDigit();
    void focusBehindLastDigit();

public slots:
    void inc();
    void dec();

signals:
    void valueChanged(int value);
    /// The user moved past the last digit, or back past the first.
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
