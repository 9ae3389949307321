#pragma once

#include "export/exportresult.h"

#include <QString>
#include <QStringList>

/// What the user is told at the end of an export; `files` are the parts that were written. Any thread.
QString exportOutcomeText(ExportResult result, const QStringList& files);
