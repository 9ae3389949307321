#pragma once

#include <QtGlobal>

#include <unistd.h>

/// Acts as a user without rights while it lives; only root can.
class AsNobody
{
public:
    AsNobody() { m_isNobody = ::setegid(kNobody) == 0 && ::seteuid(kNobody) == 0; }
    ~AsNobody()
    {
        if (m_isNobody && (::seteuid(0) != 0 || ::setegid(0) != 0)) {
            qFatal("the test cannot become root again");
        }
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

    bool isNobody() const { return m_isNobody; }

private:
    static constexpr uid_t kNobody = 65534;

    bool m_isNobody = false;
};
