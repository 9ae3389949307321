#pragma once

#include <QTreeWidget>

/// The channel table's view. Its cells hold controls; one takes the focus by a click or a key, not from a
/// pointer that passes over.
class ChannelTree : public QTreeWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChannelTree)

public:
    explicit ChannelTree(QWidget* parent = nullptr);

protected:
    using QTreeWidget::edit;
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
};
