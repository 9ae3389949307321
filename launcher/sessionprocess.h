#pragma once

#include <QProcess>

namespace scnlauncher {

/// A process in a session of its own: what a terminal does to the launcher, Ctrl+C or its closing, reaches
/// the launcher alone, which then ends its processes in their order.
class SessionProcess : public QProcess
{
public:
    enum class Life {
        Own,      ///< It outlives a launcher that dies.
        Launchers ///< It gets SIGTERM when the launcher dies, whatever ends that.
    };

    explicit SessionProcess(Life life)
        : m_life(life)
    {
    }

protected:
    /// Only async-signal-safe calls here: it runs between fork and exec.
    void setupChildProcess() override;

private:
    Life m_life;
};

} // namespace scnlauncher
