#pragma once

#include <QVector>
#include <QWidget>

namespace scn {
class PathLabel;
} // namespace scn

namespace scnlauncher {

/// Texts side by side, from the left. It takes whatever width it is given: where that is too little for all, the
/// important texts come first, and the others are cut with "…".
class TextRow : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TextRow)

public:
    explicit TextRow(QWidget* parent);

    /// Adds a label on the right of the others. The lowest rank gets its width first; `share` is what it
    /// gets before any text gets more than its share, in pixels.
    scn::PathLabel* addText(const QString& name, int rank, int share);

    /// Shows a text; an empty one takes no room.
    void setText(scn::PathLabel* label, const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Entry
    {
        scn::PathLabel* label = nullptr;
        int rank = 0;
        int share = 0;
        int width = 0;
    };

    void arrange();
    void grant(bool isWhole, int& room);

    QVector<Entry> m_entries;
};

} // namespace scnlauncher
