#pragma once

#include <QObject>

namespace scn {

/// Swallows the deferred deletion of the object it is installed on: closing a window that has
/// Qt::WA_DeleteOnClose but lives on the stack must not delete it.
class DeletionFilter : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DeletionFilter)

public:
    DeletionFilter();

    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace scn
