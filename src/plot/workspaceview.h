#pragma once

#include <QStringList>

namespace scn {

/// What a window of the workspace shows: the workspace tells it of channels and readings.
class WorkspaceView
{
public:
    WorkspaceView(const WorkspaceView&) = delete;
    WorkspaceView& operator=(const WorkspaceView&) = delete;
    virtual ~WorkspaceView() = default;

    /// Offers these channels, "none" first. What is on show stays.
    virtual void setChannelList(const QStringList& items) = 0;

    /// The series are about to be rebuilt: lets go of them and offers these channels.
    virtual void rebuildChannelList(const QStringList& items) = 0;

    /// A batch of readings is in the series; the last one's time in ms since the epoch.
    virtual void onNewSample(qint64 timeMs) = 0;

protected:
    WorkspaceView() = default;
};

} // namespace scn
