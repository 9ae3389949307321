#pragma once

#include "export/csvrows.h"
#include "export/curvecursor.h"

#include <QtGlobal>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace scn {

/// Reads the samples of several cursors on its own thread, a few blocks ahead of the consumer.
/// While it exists, no one else may touch the cursors.
class BlockReader
{
public:
    using Cursors = std::vector<std::unique_ptr<CurveCursor>>;

    /// @param rowsPerBlock samples of each curve in a block, but for the last one
    /// @param stop ends the reading with the curve that is being read, as a failure
    BlockReader(Cursors& cursors, std::size_t rowsPerBlock, const std::atomic<bool>& stop);

    /// Ends with the curve that is being read.
    ~BlockReader();
    Q_DISABLE_COPY_MOVE(BlockReader)

    /// Hands over the next block in exchange for the memory of an old one; waits for it. A block
    /// without rows is the end. False if reading failed.
    bool take(SampleBlock& block);

private:
    struct ReadBlock
    {
        SampleBlock samples;
        bool failed = false;
    };

    void run();
    void readInto(ReadBlock& block);

    Cursors& m_cursors;
    std::size_t m_rowsPerBlock;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<ReadBlock> m_ready;
    std::vector<SampleBlock> m_spare;
    const std::atomic<bool>& m_stop;
    std::atomic<bool> m_abandoned{false};
    std::thread m_thread; ///< Last: it starts once everything else exists.
};

} // namespace scn
