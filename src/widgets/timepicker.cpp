#include "widgets/timepicker.h"

#include "common/threadassert.h"
#include "widgets/timecolumn.h"

#include <QHBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double kSecondsPerDay = 86400.0;
constexpr double kSecondsPerHour = 3600.0;
constexpr double kSecondsPerMinute = 60.0;
constexpr double kMsPerSecond = 1000.0;

/// Largest values of the columns, whatever the maximum of the total.
constexpr int kMaxDays = 99;
constexpr int kMaxHours = 23;
constexpr int kMaxMinutes = 59;
constexpr int kMaxSeconds = 59;
constexpr int kMaxMilliseconds = 999;

constexpr double kInitialMaximum = 1000.0;
constexpr int kInitialSeconds = 10;

/// The integer part of the number, at most the limit; 0 if it is not positive.
int wholePart(double number, int limit)
{
    if (!(number > 0.0)) {
        return 0;
    }
    return static_cast<int>(std::min(std::floor(number), static_cast<double>(limit)));
}

} // namespace

TimePicker::TimePicker(QWidget* parent)
    : QWidget(parent)
    , m_days(new TimeColumn(QStringLiteral("DD"), 0, kMaxDays, 2, QString(), true, this))
    , m_hours(
          new TimeColumn(QStringLiteral("HH"), 0, kMaxHours, 2, QStringLiteral(":"), false, this))
    , m_minutes(
          new TimeColumn(QStringLiteral("MM"), 0, kMaxMinutes, 2, QStringLiteral(":"), false, this))
    , m_seconds(
          new TimeColumn(QStringLiteral("SS"), 0, kMaxSeconds, 2, QStringLiteral(":"), false, this))
    , m_milliseconds(new TimeColumn(QStringLiteral("MS"), 0, kMaxMilliseconds, 3,
                                    QStringLiteral("."), false, this))
    , m_maximum(kInitialMaximum)
{
    assertGuiThread();
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(this);
    layout->setSpacing(0);
    for (TimeColumn* column : columns()) {
        layout->addWidget(column);
    }
    m_milliseconds->hide();
    connectColumns();
    setTime(0, 0, 0, kInitialSeconds, 0);
}

std::array<TimeColumn*, 5> TimePicker::columns() const
{
    return {m_days, m_hours, m_minutes, m_seconds, m_milliseconds};
}

void TimePicker::connectColumns()
{
    const std::array<TimeColumn*, 5> all = columns();
    for (std::size_t i = 0; i < all.size(); ++i) {
        connect(all[i], &TimeColumn::valueChanged, this, &TimePicker::updateRanges);
        // The chain wraps around the visible columns, so its ends depend on the milliseconds.
        connect(all[i], &TimeColumn::focusNext, this,
                [this, i] { columns()[(i + 1) % visibleColumnCount()]->focusFirstDigit(); });
        connect(all[i], &TimeColumn::focusPrev, this, [this, i] {
            const std::size_t count = visibleColumnCount();
            columns()[(i + count - 1) % count]->focusBehindLastDigit();
        });
    }
}

std::size_t TimePicker::visibleColumnCount() const
{
    return m_showMilliseconds ? 5 : 4;
}

void TimePicker::setTime(int days, int hours, int minutes, int seconds, int milliseconds)
{
    assertGuiThread();
    m_days->setValue(days);
    m_hours->setValue(hours);
    m_minutes->setValue(minutes);
    m_seconds->setValue(seconds);
    if (m_showMilliseconds) {
        m_milliseconds->setValue(milliseconds);
    }
    updateRanges();
}

double TimePicker::value() const
{
    return m_days->value() * kSecondsPerDay + m_hours->value() * kSecondsPerHour +
           m_minutes->value() * kSecondsPerMinute + m_seconds->value() +
           m_milliseconds->value() / kMsPerSecond;
}

void TimePicker::setMaximum(double seconds)
{
    assertGuiThread();
    m_maximum = seconds;
    updateRanges();
}

void TimePicker::setMillisecondsVisible(bool visible)
{
    assertGuiThread();
    if (visible == m_showMilliseconds) {
        return;
    }
    m_showMilliseconds = visible;
    m_milliseconds->setVisible(visible);
    layout()->invalidate();
    layout()->activate();
    adjustSize();
}

void TimePicker::updateRanges()
{
    // Each column's share is subtracted from the remainder a second time, so the limits tighten faster
    // than the remaining time. A clamped column re-enters here through its valueChanged() before the
    // outer pass continues with the values it has read.
    const double days = m_days->value() * kSecondsPerDay;
    const double hours = m_hours->value() * kSecondsPerHour;
    const double minutes = m_minutes->value() * kSecondsPerMinute;
    const double seconds = m_seconds->value();
    const double milliseconds = m_milliseconds->value() / kMsPerSecond;

    const auto positive = [](double number) { return number > 0.0 ? number : 0.0; };
    const double left = positive(m_maximum - (days + hours + minutes + seconds + milliseconds));
    m_days->setRange(0, wholePart(left / kSecondsPerDay, kMaxDays));
    const double leftForHours = positive(left - days);
    m_hours->setRange(0, wholePart(leftForHours / kSecondsPerHour, kMaxHours));
    const double leftForMinutes = positive(leftForHours - hours);
    m_minutes->setRange(0, wholePart(leftForMinutes / kSecondsPerMinute, kMaxMinutes));
    const double leftForSeconds = positive(leftForMinutes - minutes);
    m_seconds->setRange(0, wholePart(leftForSeconds, kMaxSeconds));
    const double leftForMs = leftForSeconds - seconds;
    m_milliseconds->setRange(0, wholePart(leftForMs * kMsPerSecond, kMaxMilliseconds));

    emit sigTimePickerValueChanged(value());
}
