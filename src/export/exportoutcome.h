#pragma once

#include "export/exportresult.h"

#include <QString>
#include <QStringList>

/// The message for the user at the end of an export; `files` are the parts written. Any thread.
QString exportOutcomeText(ExportResult result, const QStringList& files);
