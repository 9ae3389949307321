#pragma once

#include <QObject>

/// Swallows the deferred deletion of what it is installed on: a window with Qt::WA_DeleteOnClose
/// that lives on the stack is not deleted by its own close.
class DeletionFilter : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DeletionFilter)

public:
    DeletionFilter();

    bool eventFilter(QObject* watched, QEvent* event) override;
};
