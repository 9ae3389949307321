#include "launcher/sessionprocess.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

// Linux: other systems have no signal for the death of a parent.

namespace scnlauncher {

void SessionProcess::setupChildProcess()
{
    ::setsid();
    if (m_life == Life::Launchers) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    }
}

} // namespace scnlauncher
