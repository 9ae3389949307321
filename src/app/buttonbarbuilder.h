#pragma once

#include <QCoreApplication>

class ImageButton;
class QHBoxLayout;
class QIcon;
class QLabel;
class QSize;
class QTimer;
class QWidget;

namespace scn {

/// The bar below the pages. Null until built. MainWidget derives from it, so these are its members.
struct ButtonBarForm
{
    QWidget* m_buttonBar = nullptr;
    QHBoxLayout* m_buttonBarLayout = nullptr;
    ImageButton* m_startButton = nullptr;
    ImageButton* m_exportButton = nullptr;
    QLabel* m_runningLabel = nullptr; ///< not in the layout until a run starts
    QTimer* m_storeWatch = nullptr;   ///< runs while the running label is shown
};

/// Builds the bar below the pages and connects nothing. GUI thread.
class ButtonBarBuilder
{
    Q_DECLARE_TR_FUNCTIONS(MainWidget)

public:
    /// Returns a new bar, a child of `parent`.
    ButtonBarForm build(QWidget* parent);

private:
    ImageButton* addButton(const QIcon& icon, const QString& text, const QSize& iconSize,
                           const QSize& size);

    ButtonBarForm m_form;
};

} // namespace scn
