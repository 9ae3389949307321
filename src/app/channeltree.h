#pragma once

#include <QTreeWidget>

namespace scn {

/// The view of the channel table. A control in a cell gets the focus by a click or a key, not when the pointer
/// passes over it.
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

} // namespace scn
