#pragma once

#include <QLabel>

/// A label whose text can run downwards, rotated by 90 degrees.
class RotatedLabel : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RotatedLabel)

public:
    explicit RotatedLabel(QWidget* parent = nullptr);

    bool isVertical() const { return m_vertical; }
    void setVertical(bool vertical);

    /// The base class's hints, with width and height swapped while the text is vertical.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_vertical = false;
};
