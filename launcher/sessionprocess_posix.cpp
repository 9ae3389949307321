#include "launcher/sessionprocess.h"

#include <unistd.h>

namespace scnlauncher {

void SessionProcess::setupChildProcess()
{
    ::setsid();
}

} // namespace scnlauncher
