#pragma once

#include <QMetaType>

/// Outcome of an export of stored curves.
enum ExportResult {
    ExportSuccess = 0,    ///< every curve was written to its end
    ExportFileError = 1,  ///< a CSV part could not be created
    ExportNoData = 2,     ///< there was nothing to export
    ExportDbError = 3,    ///< there is no store, or it cannot be read to its end
    ExportCancelled = 4,  ///< a stop was requested
    ExportWriteError = 5, ///< a row could not be written
};
Q_DECLARE_METATYPE(ExportResult)
