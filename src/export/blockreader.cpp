#include "export/blockreader.h"

#include "storage/lockpatience.h"

#include <QDebug>

#include <exception>
#include <utility>

namespace scn {

namespace {

/// Enough to bridge a slow write.
constexpr std::size_t kBlocksAhead = 3;

} // namespace

BlockReader::BlockReader(Cursors& cursors, std::size_t rowsPerBlock, const std::atomic<bool>& stop)
    : m_cursors(cursors)
    , m_rowsPerBlock(rowsPerBlock)
    , m_stop(stop)
    , m_thread([this] { run(); })
{
}

BlockReader::~BlockReader()
{
    {
        const std::lock_guard<std::mutex> locker(m_mutex);
        m_abandoned = true;
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
    // A file locked by another process is waited for once, not once per curve.
    const LockPatience patience;
    for (bool more = true; more;) {
        ReadBlock block;
        {
            std::unique_lock<std::mutex> locker(m_mutex);
            m_changed.wait(locker, [this] { return m_abandoned || m_ready.size() < kBlocksAhead; });
            if (m_abandoned) {
                return;
            }
            if (!m_spare.empty()) {
                block.samples = std::move(m_spare.back());
                m_spare.pop_back();
            }
        }
        try {
            readInto(block);
        } catch (const std::exception& failure) {
            qWarning() << "[获取数据] 读取失败：" << failure.what();
            block.failed = true;
        }
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
        block.failed = cursor->hasFailed() || m_stop || m_abandoned;
        if (block.failed) {
            return;
        }
        ++column;
    }
}

} // namespace scn
