#pragma once

#include "app/loggingform.h"

#include <QCoreApplication>

class QScrollArea;
class QWidget;

namespace scn {

/// The settings page of a logging run.
struct LoggingPage
{
    QScrollArea* page = nullptr;
    QWidget* content = nullptr;
    LoggingForm form;
};

/// Builds the logging page. Nothing is connected, so nothing is sent while it is built. GUI thread.
class LoggingPageBuilder
{
    Q_DECLARE_TR_FUNCTIONS(LoggingPageBuilder)

public:
    /// A new page as a child of `parent`.
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
