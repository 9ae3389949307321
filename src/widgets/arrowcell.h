#pragma once

#include <QString>
#include <Qt>

class QLabel;
class QStackedLayout;
class QToolButton;
class QWidget;

namespace scn {

/// A cell that shows a label, or an arrow button while its column is being edited. GUI thread.
class ArrowCell
{
public:
    /// Largest height of an arrow, in pixels.
    static constexpr int kHeight = 12;

    /// The widgets belong to `parent`, the layout to whatever it is added to.
    ArrowCell(Qt::ArrowType arrow, const QString& text, QWidget* parent);

    QStackedLayout* layout() const { return m_stack; }
    QToolButton* button() const { return m_button; }
    QLabel* label() const { return m_label; }

    void showArrow(bool on);

private:
    QToolButton* m_button;
    QLabel* m_label;
    QStackedLayout* m_stack;
};

} // namespace scn
