#pragma once

#include "plot/headergroup.h"

#include <QHeaderView>
#include <QVector>

/// A horizontal header of two tiers: group captions above, the ordinary section texts below. The
/// groups may not overlap; a section in no group shows a plain fill above the line. GUI thread.
class GroupedHeaderView : public QHeaderView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GroupedHeaderView)

public:
    GroupedHeaderView(const QVector<HeaderGroup>& groups, QWidget* parent);

    /// The ordinary width and the height of both tiers, 60 pixels.
    QSize sizeHint() const override;

protected:
    /// Hover events do not reach the header: its sections never light up.
    bool event(QEvent* event) override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;

private:
    const HeaderGroup* groupOf(int logicalIndex) const;
    void paintGroup(QPainter* painter, const HeaderGroup& group, int top, int lineY) const;

    QVector<HeaderGroup> m_groups;
    int m_gap = 4;
};
