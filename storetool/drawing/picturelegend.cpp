#include "storetool/drawing/picturelegend.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace scnstore {
namespace {

constexpr int kLineLength = 20;
constexpr int kLineWidth = 3;
constexpr int kSpacing = 6;
constexpr int kRowHeight = 20;

int widestOf(const QVector<PictureLegend::Entry>& entries, const QFontMetrics& metrics)
{
    int widest = 0;
    for (const PictureLegend::Entry& entry : entries) {
        widest = std::max(widest, metrics.horizontalAdvance(entry.name));
    }
    return widest;
}

} // namespace

PictureLegend::PictureLegend(const QVector<Entry>& entries, int width, QWidget* parent)
    : QWidget(parent)
    , m_entries(entries)
{
    ensurePolished();
    m_entryWidth = kLineLength + widestOf(entries, fontMetrics()) + 3 * kSpacing;
    m_columns = std::max(1, width / m_entryWidth);
    setFixedHeight((m_entries.size() + m_columns - 1) / m_columns * kRowHeight);
}

void PictureLegend::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    for (int i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries.at(i);
        const QRect place(i % m_columns * m_entryWidth, i / m_columns * kRowHeight, m_entryWidth,
                          kRowHeight);
        painter.fillRect(place.left(), place.center().y() - kLineWidth / 2, kLineLength, kLineWidth,
                         entry.color);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(place.adjusted(kLineLength + kSpacing, 0, 0, 0),
                         Qt::AlignLeft | Qt::AlignVCenter, entry.name);
    }
}

} // namespace scnstore
