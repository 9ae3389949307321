#pragma once

#include <QWidget>

#include <array>
#include <cstddef>

class TimeColumn;

/// A compact editor of a duration: days, hours, minutes, seconds and, on demand, milliseconds.
/// It keeps the sum of its columns under a maximum. It belongs to the GUI thread.
class TimePicker : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TimePicker)

public:
    /// Starts with 10 seconds, a maximum of 1000 seconds and no milliseconds on show.
    explicit TimePicker(QWidget* parent = nullptr);

    /// Sets the columns from the left, each brought into the range it has at that moment; the
    /// milliseconds only while they are on show.
    void setTime(int days, int hours, int minutes, int seconds, int milliseconds);

    /// The duration in seconds.
    double value() const;

    /// Largest duration in seconds.
    void setMaximum(double seconds);

    void setMillisecondsVisible(bool visible);

signals:
    /// The duration in seconds, after each update of the columns' ranges.
    void sigTimePickerValueChanged(double value);

private:
    /// From the left.
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
