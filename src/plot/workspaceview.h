#pragma once

#include <QStringList>

namespace scn {

/// The content of a workspace window, as the workspace sees it.
class WorkspaceView
{
public:
    WorkspaceView(const WorkspaceView&) = delete;
    WorkspaceView& operator=(const WorkspaceView&) = delete;
    virtual ~WorkspaceView() = default;

    /// Offers these channels, "none" first. What is shown stays.
    virtual void setChannelList(const QStringList& items) = 0;

    /// The series are about to be rebuilt: releases them and offers these channels.
    virtual void rebuildChannelList(const QStringList& items) = 0;

    /// The series have a new batch of readings, the last one from `timeMs` (ms since the epoch).
    virtual void onNewSample(qint64 timeMs) = 0;

protected:
    WorkspaceView() = default;
};

} // namespace scn
