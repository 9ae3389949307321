#include "launcher/textrow.h"

#include "widgets/pathlabel.h"

#include <QEvent>

#include <algorithm>

namespace scnlauncher {
namespace {

constexpr int kSpacing = 16;
/// Less of a cut text says nothing.
constexpr int kLeastWidth = 40;

} // namespace

TextRow::TextRow(QWidget* parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

scn::PathLabel* TextRow::addText(const QString& name, int rank, int share)
{
    auto* label = new scn::PathLabel(1, QWIDGETSIZE_MAX, this);
    label->setObjectName(name);
    label->hide();
    m_entries.append({label, rank, share, 0});
    return label;
}

void TextRow::setText(scn::PathLabel* label, const QString& text)
{
    if (label->text() != text) {
        label->setText(text);
        arrange();
    }
}

QSize TextRow::sizeHint() const
{
    return minimumSizeHint();
}

QSize TextRow::minimumSizeHint() const
{
    return {0, fontMetrics().height()};
}

bool TextRow::event(QEvent* event)
{
    // A label has another font, now that a style sheet has had its say.
    if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Show) {
        arrange();
    }
    return QWidget::event(event);
}

void TextRow::resizeEvent(QResizeEvent*)
{
    arrange();
}

void TextRow::arrange()
{
    int room = width();
    for (Entry& entry : m_entries) {
        entry.width = 0;
    }
    for (const bool isWhole : {false, true}) {
        grant(isWhole, room);
    }
    int left = 0;
    for (const Entry& entry : qAsConst(m_entries)) {
        entry.label->setVisible(entry.width > 0);
        if (entry.width > 0) {
            entry.label->setGeometry(left, 0, entry.width, height());
            left += entry.width + kSpacing;
        }
    }
}

/// Widens the texts to what they need, or to their shares, while there is room.
void TextRow::grant(bool isWhole, int& room)
{
    QVector<Entry*> byRank;
    for (Entry& entry : m_entries) {
        byRank.append(&entry);
    }
    std::stable_sort(byRank.begin(), byRank.end(),
                     [](const Entry* one, const Entry* other) { return one->rank < other->rank; });
    for (Entry* entry : qAsConst(byRank)) {
        const int needed = entry->label->text().isEmpty() ? 0 : entry->label->sizeHint().width();
        const int before = entry->width > 0 ? entry->width : -kSpacing;
        const int most = isWhole ? needed : std::min(needed, entry->share);
        const int given = std::min(most, before + room);
        if (given > entry->width && given >= std::min(needed, kLeastWidth)) {
            room -= given - before;
            entry->width = given;
        }
    }
}

} // namespace scnlauncher
