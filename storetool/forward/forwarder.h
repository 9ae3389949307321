#pragma once

#include "storetool/forward/followedfiles.h"
#include "storetool/forward/forwardreport.h"
#include "storetool/forward/readingtable.h"
#include "storetool/forward/serverconnection.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <vector>

namespace scnstore {

/// What is forwarded where.
struct ForwardSetup
{
    QStringList directories;
    QString target;
    bool once = false; ///< End when all there is has been forwarded.
    std::chrono::milliseconds reportInterval = std::chrono::minutes(1);
};

/// Follows day files and copies their new readings into a database, until it is told to stop.
class Forwarder
{
public:
    enum class End {
        Done,
        ServerFailed, ///< See errorText().
        FilesBusy,    ///< See errorText().
        FilesRefused, ///< See errorText().
        FilesInUse,   ///< See errorText().
        FilesDamaged,
    };

    Forwarder(const ForwardSetup& setup, const ForwardReport::Say& say);

    End run();

    /// Why nothing can be forwarded, a sentence.
    const QString& errorText() const { return m_errorText; }

private:
    using Clock = std::chrono::steady_clock;

    /// How a turn of the loop went.
    enum class Turn {
        Through, ///< Everything that could be read is forwarded.
        Full,    ///< There was more than a batch takes.
        Failed,
    };

    bool mayGoOn();
    bool connect();
    Turn forwardOnce();
    bool askForPlaces(FollowedFile& file);
    bool readFiles(ReadingBatch& batch);
    void readFile(FollowedFile& file, ReadingBatch& batch);
    bool store(const ReadingBatch& batch);
    Turn keepRead();
    void noteFailure(bool isSlip);
    bool isStuck();
    End end();

    const ForwardSetup m_setup;
    QString m_errorText;
    ForwardReport m_report;
    FollowedFiles m_files;
    ServerConnection m_server;
    ReadingTable m_table;
    /// The files that the batch has readings of, and those among them that turned out damaged.
    std::vector<FollowedFile*> m_read;
    std::vector<FollowedFile*> m_damaged;
    std::size_t m_turns = 0;
    bool m_wasReady = false;
    bool m_isHopeless = false;
    Clock::duration m_pause{};
    Clock::time_point m_nextTry;
    Clock::time_point m_nextLook;
    Clock::time_point m_lastProgress = Clock::now();
    Clock::time_point m_stoppedAt;
};

} // namespace scnstore
