#include "storetool/runs/runstore.h"

#include <QDeadlineTimer>

#include <chrono>

namespace scnstore {
namespace {

/// Nothing has to be written at the end.
constexpr std::chrono::seconds kClosing{2};

} // namespace

RunStore::RunStore(const StoredRun& run)
    : m_store(run.directory, nullptr, scn::FileAccess::Read)
{
}

RunStore::~RunStore()
{
    m_store.closeForExit(QDeadlineTimer(kClosing));
}

} // namespace scnstore
