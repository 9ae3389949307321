#pragma once

#include <QStyledItemDelegate>

/// Draws the rows of a combo box's popup, each taller by the same spacing.
class CustomItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomItemDelegate)

public:
    explicit CustomItemDelegate(int spacing, QObject* parent = nullptr);

    /// Added to each row's height, in pixels.
    int spacing() const { return m_spacing; }

    /// Sets the spacing; the view measures its rows again.
    void setSpacing(int spacing);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    int m_spacing;
};
