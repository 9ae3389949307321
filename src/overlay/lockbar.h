#pragma once

#include <QCoreApplication>
#include <QRectF>
#include <QString>

class QGraphicsProxyWidget;
class QGraphicsScene;
class QPushButton;

namespace scn {

/// The bar on a lock's veil: a button in the scene, which owns it. Its text is as large as the bar has room for;
/// the longer one, the request to hold it, decides. GUI thread.
class LockBar
{
    Q_DECLARE_TR_FUNCTIONS(LockableDataCollectionView)

public:
    explicit LockBar(QGraphicsScene* scene);

    QPushButton* button() const { return m_button; }

    /// Shows the text of a bar at rest.
    void askForHold();

    /// Shows the text of a bar that is held.
    void tellOfUnlocking();

    /// Puts the bar in the middle of the veil, moved into `room`, the part of it that can be seen.
    void layOut(const QRectF& veil, const QRectF& room);

private:
    static QString holdText();

    QPushButton* m_button;
    QGraphicsProxyWidget* m_proxy = nullptr;
};

} // namespace scn
