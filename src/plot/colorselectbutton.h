#pragma once

#include <QColor>
#include <QList>
#include <QPushButton>

class QMenu;

/// A small square that shows a curve's colour; a click opens a menu of 18 swatches below it. New buttons
/// cycle through the palette, across all chart windows of the process. GUI thread.
class ColorSelectButton : public QPushButton
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ColorSelectButton)

public:
    explicit ColorSelectButton(QWidget* parent = nullptr);

    /// Colour of the n-th button of a process, counted from 0.
    static QColor paletteColor(int n);

    QColor color() const { return m_color; }

signals:
    /// The user has chosen a colour, possibly the current one.
    void colorChanged(QColor color);

private slots:
    /// Lets the user choose any colour in a dialog; nothing offers it yet.
    void showColorDialog();
    void updateButtonColor(QColor color);

private:
    void showMenu();
    QMenu* buildMenu();
    void showCurrentColor();

    static int nextColorIndex;

    QColor m_color;
    // Created on the first click: most of a chart's 40 buttons never show it.
    QMenu* m_menu = nullptr;
    QList<QColor> m_palette;
};
