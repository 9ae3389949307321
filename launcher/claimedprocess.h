#pragma once

#include "launcher/childclaim.h"
#include "launcher/sessionprocess.h"

#include <memory>
#include <utility>

namespace scnlauncher {

/// A process that keeps what was claimed for it, also when its launcher dies.
class ClaimedProcess : public SessionProcess
{
public:
    ClaimedProcess()
        : SessionProcess(Life::Own)
    {
    }

    /// To be given before the start; null takes it away.
    void setClaim(std::shared_ptr<ChildClaim> claim) { m_claim = std::move(claim); }

protected:
    void setupChildProcess() override
    {
        SessionProcess::setupChildProcess();
        if (m_claim) {
            m_claim->passOn();
        }
    }

private:
    std::shared_ptr<ChildClaim> m_claim;
};

} // namespace scnlauncher
