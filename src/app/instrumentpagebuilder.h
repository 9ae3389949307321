#pragma once

#include <QCoreApplication>

class QScrollArea;
class QWidget;

namespace scn {

/// The settings page of the slots.
struct InstrumentPage
{
    QScrollArea* page = nullptr;
    QWidget* content = nullptr;
};

/// Builds the instrument page, which is for show: nothing hangs on its controls. GUI thread.
class InstrumentPageBuilder
{
    Q_DECLARE_TR_FUNCTIONS(InstrumentPageBuilder)

public:
    /// A new page as a child of `parent`.
    static InstrumentPage build(QWidget* parent);

private:
    static QWidget* buildSlotPanel(int slot, QWidget* parent);
};

} // namespace scn
