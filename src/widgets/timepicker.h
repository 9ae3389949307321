#pragma once

#include <QWidget>

#include <array>
#include <cstddef>

class TimeColumn;

/// A compact duration editor: days, hours, minutes, seconds and, on demand, milliseconds. It keeps the
/// total below a maximum. GUI thread.
class TimePicker : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TimePicker)

public:
    /// Starts at 10 seconds with a maximum of 1000 and the milliseconds hidden.
    explicit TimePicker(QWidget* parent = nullptr);

    /// Sets the columns from the left, each clamped to its range at that moment; the milliseconds
    /// only if they are visible.
    void setTime(int days, int hours, int minutes, int seconds, int milliseconds);

    /// The duration in seconds.
    double value() const;

    /// Largest duration in seconds.
    void setMaximum(double seconds);

    void setMillisecondsVisible(bool visible);

signals:
    /// Sent after each update of the columns' ranges; the duration in seconds.
    void sigTimePickerValueChanged(double value);

private:
    /// From left to right.
    std::array<TimeColumn*, 5> columns() const;
    std::size_t visibleColumnCount() const;
    void connectColumns();
    void updateRanges();

    TimeColumn* m_days;
    TimeColumn* m_hours;
    TimeColumn* m_minutes;
    TimeColumn* m_seconds;
    TimeColumn* m_milliseconds;
    bool m_showMilliseconds = false;
    double m_maximum;
};
