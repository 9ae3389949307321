#pragma once

#include <QtGlobal>

/// Readings of all curves in turn, one millisecond apart.
class Readings
{
public:
    Readings(int curves, qint64 start)
        : m_curves(curves)
        , m_time(start)
    {
    }

    void next()
    {
        m_curveId = m_curveId % m_curves + 1;
        ++m_time;
        m_value = m_value < 1000.0 ? m_value + 0.125 : -1000.0;
    }
    int curveId() const { return m_curveId; }
    qint64 time() const { return m_time; }
    double value() const { return m_value; }

private:
    int m_curves;
    int m_curveId = 0;
    qint64 m_time;
    double m_value = 0.0;
};
