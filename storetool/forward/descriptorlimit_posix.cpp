#include "storetool/forward/descriptorlimit.h"

#include <sys/resource.h>

#include <algorithm>

namespace scnstore {

namespace {

constexpr rlim_t kMost = 65536;
constexpr rlim_t kForTheRest = 64;

/// The file, its log and the index of the log.
constexpr rlim_t kForDatabase = 3;

} // namespace

int mostOpenDatabases()
{
    struct rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return 1;
    }
    const rlim_t wanted = std::min(limit.rlim_max, kMost);
    if (wanted > limit.rlim_cur) {
        const struct rlimit raised = {wanted, limit.rlim_max};
        if (::setrlimit(RLIMIT_NOFILE, &raised) == 0) {
            limit.rlim_cur = wanted;
        }
    }
    const rlim_t free = limit.rlim_cur > kForTheRest ? limit.rlim_cur - kForTheRest : 0;
    return static_cast<int>(std::max<rlim_t>(std::min(free, kMost) / kForDatabase, 1));
}

} // namespace scnstore
