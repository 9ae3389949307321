#pragma once

#include <QLabel>

namespace scn {

/// A label for plain texts of any length, paths above all. It wraps anywhere and elides in the middle
/// what does not fit; text() keeps the whole text, and the tool tip shows it if it is not set to another.
class PathLabel : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PathLabel)

public:
    /// @param maximumLines most lines that it wraps to
    /// @param maximumWidth widest text that its size hint asks for, in pixels
    PathLabel(int maximumLines, int maximumWidth, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QSize frameSize() const;

    int m_maximumLines;
    int m_maximumWidth;
};

} // namespace scn
