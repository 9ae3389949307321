#pragma once

#include "dialogue/dialogue.h"

#include <QRegularExpression>
#include <QString>

#include <chrono>
#include <map>
#include <string>

/// Converts the simulator's text to Qt's, so that a failed comparison shows both sides.
inline QString shown(const std::string& text)
{
    return QString::fromStdString(text);
}

/// The name by which a query answers a function.
inline QString shortNameOf(const scnsim::FunctionInfo& function)
{
    return QString::fromLatin1(function.spelling)
        .remove(QRegularExpression(QStringLiteral("\\[.*\\]|[a-z]")));
}

/// The function of a short name.
inline const scnsim::FunctionInfo& functionCalled(const QString& shortName)
{
    for (const scnsim::FunctionInfo& function : scnsim::functions()) {
        if (shortNameOf(function) == shortName) {
            return function;
        }
    }
    qFatal("There is no function %s", qPrintable(shortName));
}

/// An instrument with its command language, on a clock that only the test moves. Power-on is at
/// 2024-01-02 03:04:05.000.
class SimBench
{
public:
    using Slots = std::map<int, int>;

    explicit SimBench(const Slots& modules = {{1, 1}, {2, 2}, {3, 8}})
        : SimBench(setupWith(modules))
    {
    }

    explicit SimBench(const scnsim::InstrumentSetup& setup)
        : m_instrument(setup)
        , m_dialogue(m_instrument, "SCN,SCN4070A,MY00000042,01.02-sim")
    {
    }

    static scnsim::InstrumentSetup setupWith(const Slots& modules)
    {
        scnsim::InstrumentSetup setup;
        setup.modules = modules;
        setup.powerOnTime = {2024, 1, 2, 3, 4, 5, 0};
        return setup;
    }

    /// Sends one line; returns the answer, empty for none.
    QString ask(const QString& line) { return shown(m_dialogue.handle(line.toStdString(), m_now)); }
    QString ask(const char* line) { return ask(QString::fromUtf8(line)); }

    /// Lets time pass without a line.
    void pass(std::chrono::nanoseconds time)
    {
        m_now += time;
        m_dialogue.advance(m_now);
    }

    scnsim::Instrument& instrument() { return m_instrument; }
    scnsim::Dialogue& dialogue() { return m_dialogue; }
    scnsim::Instant now() const { return m_now; }

private:
    scnsim::Instrument m_instrument;
    scnsim::Dialogue m_dialogue;
    scnsim::Instant m_now{0};
};
