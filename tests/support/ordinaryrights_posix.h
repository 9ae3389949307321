#pragma once

#include <QString>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

// Linux: capabilities are its own.

/// Gives up for good what lets root open files that their modes keep from it, and terminals that others
/// have to themselves. Programs started from now on lack it, too. Gives what stood in the way; empty on
/// success, and for a user who is not root.
inline QString keepOrdinaryRights()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
    const auto failure = [] { return QString::fromLocal8Bit(std::strerror(errno)); };
    if (::geteuid() != 0) {
        return {};
    }
    if (::syscall(SYS_capget, &header, sets) != 0) {
        return failure();
    }
    for (const int right : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_SYS_ADMIN}) {
        if (::prctl(PR_CAPBSET_DROP, right, 0, 0, 0) != 0) {
            return failure();
        }
        const uint32_t others = ~CAP_TO_MASK(right);
        sets[CAP_TO_INDEX(right)].effective &= others;
        sets[CAP_TO_INDEX(right)].permitted &= others;
        sets[CAP_TO_INDEX(right)].inheritable &= others;
    }
    return ::syscall(SYS_capset, &header, sets) == 0 ? QString() : failure();
}
