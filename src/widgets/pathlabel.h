#pragma once

#include <QLabel>

/// A label for plain texts of any length, paths above all. It wraps anywhere, and what does not fit
/// into its lines goes from the middle of what is shown; text() and the tool tip keep all of it.
class PathLabel : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PathLabel)

public:
    /// @param maximumLines lines that it wraps to at most
    /// @param maximumWidth width of the text, in pixels, that it asks for at most
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
