#pragma once

#include "plot/headergroup.h"

#include <QHeaderView>
#include <QVector>

/// A two-tier horizontal header: group captions above, the ordinary section texts below. Groups must not
/// overlap; a section outside all groups has a plain fill above the line. GUI thread.
class GroupedHeaderView : public QHeaderView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GroupedHeaderView)

public:
    GroupedHeaderView(const QVector<HeaderGroup>& groups, QWidget* parent);

    /// The base's width, and 60 pixels for both tiers.
    QSize sizeHint() const override;

protected:
    /// Swallows hover events, so sections are never highlighted.
    bool event(QEvent* event) override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;

private:
    const HeaderGroup* groupOf(int logicalIndex) const;
    void paintGroup(QPainter* painter, const HeaderGroup& group, int top, int lineY) const;

    QVector<HeaderGroup> m_groups;
    int m_gap = 4;
};
