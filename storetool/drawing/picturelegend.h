#pragma once

#include <QColor>
#include <QString>
#include <QVector>
#include <QWidget>

namespace scnstore {

/// The curves of a picture by their names, each beside a piece of its line, in columns.
class PictureLegend : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PictureLegend)

public:
    struct Entry
    {
        QString name;
        QColor color;
    };

    /// As high as the entries need in this width.
    PictureLegend(const QVector<Entry>& entries, int width, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QVector<Entry> m_entries;
    int m_entryWidth;
    int m_columns;
};

} // namespace scnstore
