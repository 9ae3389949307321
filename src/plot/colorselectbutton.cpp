#include "plot/colorselectbutton.h"

#include "common/threadassert.h"

#include <QColorDialog>
#include <QGridLayout>
#include <QMenu>
#include <QPointer>
#include <QWidgetAction>

#include <iterator>

namespace {
constexpr int kButtonSide = 20;
constexpr int kSwatchesPerRow = 9;
constexpr int kSwatchSpacing = 2;

constexpr QRgb kPalette[] = {
    0xffB793E6, 0xffCF8197, 0xffDAAE7B, 0xff95E1AA, 0xffE66F3F, 0xff834DDC,
    0xffE425E4, 0xff25E4E4, 0xffE12267, 0xff5694EF, 0xff43DC1D, 0xffE2E627,
    0xff2CEBEB, 0xff84E425, 0xffD13B59, 0xffE42525, 0xffBC8651, 0xff2E2E8E,
};
} // namespace

int ColorSelectButton::nextColorIndex = 0;

ColorSelectButton::ColorSelectButton(QWidget* parent)
    : QPushButton(parent)
{
    assertGuiThread();
    setFixedSize(kButtonSide, kButtonSide);
    for (const QRgb rgb : kPalette) {
        m_palette.append(QColor(rgb));
    }
    m_color = paletteColor(nextColorIndex);
    nextColorIndex = (nextColorIndex + 1) % m_palette.size();
    showCurrentColor();
    connect(this, &QPushButton::clicked, this, &ColorSelectButton::showMenu);
}

QColor ColorSelectButton::paletteColor(int n)
{
    return QColor(kPalette[static_cast<size_t>(n) % std::size(kPalette)]);
}

void ColorSelectButton::showColorDialog()
{
    assertGuiThread();
    // The chart may be closed while the dialog is open; both go with this button.
    const QPointer<QColorDialog> dialog(new QColorDialog(m_color, this));
    dialog->setWindowTitle(tr("选择颜色"));
    dialog->exec();
    if (!dialog) {
        return;
    }
    const QColor color = dialog->selectedColor();
    delete dialog;
    if (color.isValid()) {
        updateButtonColor(color);
    }
}

void ColorSelectButton::updateButtonColor(QColor color)
{
    assertGuiThread();
    m_color = color;
    showCurrentColor();
    emit colorChanged(color);
}

void ColorSelectButton::showMenu()
{
    assertGuiThread();
    if (!m_menu) {
        m_menu = buildMenu();
    }
    // Must be the last call: the button may be gone when it returns.
    m_menu->exec(mapToGlobal(QPoint(0, height())));
}

QMenu* ColorSelectButton::buildMenu()
{
    auto* menu = new QMenu(this);
    // Or the corners would wear the button's colour.
    menu->setStyleSheet(
        QStringLiteral("QMenu { background: black; border: none; border-radius: 0; }"));
    auto* swatches = new QWidget(menu);
    swatches->setStyleSheet(QStringLiteral("background:black;"));
    auto* grid = new QGridLayout(swatches);
    grid->setSpacing(kSwatchSpacing);
    for (int i = 0; i < m_palette.size(); ++i) {
        const QColor color = m_palette.at(i);
        auto* swatch = new QPushButton(swatches);
        swatch->setFixedSize(kButtonSide, kButtonSide);
        swatch->setStyleSheet(
            QStringLiteral("background-color: %1; border: none;").arg(color.name()));
        connect(swatch, &QPushButton::clicked, this, [this, menu, color] {
            updateButtonColor(color);
            menu->close();
        });
        grid->addWidget(swatch, i / kSwatchesPerRow, i % kSwatchesPerRow);
    }
    auto* action = new QWidgetAction(menu);
    action->setDefaultWidget(swatches);
    menu->addAction(action);
    return menu;
}

void ColorSelectButton::showCurrentColor()
{
    setStyleSheet(
        QStringLiteral("background-color: %1; border: 1px solid black;").arg(m_color.name()));
}
