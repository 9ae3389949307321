#include "export/blockreader.h"

#include <algorithm>
#include <utility>

namespace {

/// Enough to bridge a write that takes longer than the others.
constexpr std::size_t kBlocksAhead = 3;

} // namespace

BlockReader::BlockReader(Cursors& cursors, std::size_t rowsPerBlock)
    : m_cursors(cursors)
    , m_rowsPerBlock(rowsPerBlock)
    , m_thread([this] { run(); })
{
}

BlockReader::~BlockReader()
{
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

bool BlockReader::take(SampleBlock& block)
{
    std::unique_lock<std::mutex> locker(m_mutex);
    m_changed.wait(locker, [this] { return !m_ready.empty(); });
    std::swap(block, m_ready.front().samples);
    const bool failed = m_ready.front().failed;
    m_spare.push_back(std::move(m_ready.front().samples));
    m_ready.pop_front();
    locker.unlock();
    m_changed.notify_all();
    return !failed;
}

void BlockReader::run()
{
    for (bool more = true; more;) {
        ReadBlock block;
        {
            std::unique_lock<std::mutex> locker(m_mutex);
            m_changed.wait(locker, [this] { return m_stopped || m_ready.size() < kBlocksAhead; });
            if (m_stopped)
                return;
            if (!m_spare.empty()) {
                block.samples = std::move(m_spare.back());
                m_spare.pop_back();
            }
        }
        readInto(block);
        more = !block.failed && block.samples.rows() > 0;
        {
            const std::lock_guard<std::mutex> locker(m_mutex);
            m_ready.push_back(std::move(block));
        }
        m_changed.notify_all();
    }
}

void BlockReader::readInto(ReadBlock& block)
{
    block.samples.columns.resize(m_cursors.size());
    auto column = block.samples.columns.begin();
    for (const auto& cursor : m_cursors) {
        column->clear();
        cursor->read(*column, m_rowsPerBlock);
        ++column;
    }
    block.failed = std::any_of(m_cursors.cbegin(), m_cursors.cend(),
                               [](const auto& cursor) { return cursor->hasFailed(); });
}
