#include "plot/viewheader.h"

#include <QHeaderView>

namespace scn {

void dressHeader(QHeaderView* header)
{
    header->setStyleSheet(QStringLiteral("QHeaderView::section {    background-color: #5D5D5D;"
                                         "    border: 0px solid #ddd;    padding: 4px;"
                                         "    font-weight: bold;}"));
    header->setHighlightSections(false);
}

} // namespace scn
