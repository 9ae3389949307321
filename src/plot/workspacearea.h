#pragma once

#include <QMdiArea>

namespace scn {

/// The area of the workspace windows. Empty, it says how to open one.
class WorkspaceArea : public QMdiArea
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WorkspaceArea)

public:
    explicit WorkspaceArea(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void updateHint();
};

} // namespace scn
