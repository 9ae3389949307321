#pragma once

#include "app/loggingform.h"

#include <QCoreApplication>

class QScrollArea;
class QWidget;

namespace scn {

/// The recording page: the form for a run.
struct LoggingPage
{
    QScrollArea* page = nullptr;
    QWidget* content = nullptr;
    LoggingForm form;
};

/// Builds the recording page. Connects nothing, so nothing is sent meanwhile. GUI thread.
class LoggingPageBuilder
{
    Q_DECLARE_TR_FUNCTIONS(MainWidget)

public:
    /// Returns a new page, a child of `parent`.
    LoggingPage build(QWidget* parent);

private:
    QGroupBox* buildFileGroup();
    QGroupBox* buildStartGroup();
    QGroupBox* buildIntervalGroup();
    QGroupBox* buildStopGroup();
    QGroupBox* buildDigitizingGroup();

    LoggingPage m_page;
};

} // namespace scn
