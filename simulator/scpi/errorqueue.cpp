#include "scpi/errorqueue.h"

#include "scpi/response.h"

namespace scnsim {

void ErrorQueue::push(ErrorCode code)
{
    if (m_entries.size() < kCapacity) {
        m_entries.push_back(code);
    } else {
        m_entries.back() = ErrorCode::QueueOverflow;
    }
}

std::string ErrorQueue::pop()
{
    ErrorCode code = ErrorCode::None;
    if (!m_entries.empty()) {
        code = m_entries.front();
        m_entries.pop_front();
    }
    return signedInteger(static_cast<int>(code)) + "," + quoted(errorText(code));
}

} // namespace scnsim
