#pragma once

#include <QCoreApplication>

class QScrollArea;
class QWidget;

namespace scn {

/// The page of the slots.
struct InstrumentPage
{
    QScrollArea* page = nullptr;
    QWidget* content = nullptr;
};

/// Builds the instrument page. It is display only: nothing is connected to its controls. GUI thread.
class InstrumentPageBuilder
{
    Q_DECLARE_TR_FUNCTIONS(MainWidget)

public:
    /// Returns a new page, a child of `parent`.
    static InstrumentPage build(QWidget* parent);

private:
    static QWidget* buildSlotPanel(int slot, QWidget* parent);
};

} // namespace scn
