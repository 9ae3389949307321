#pragma once

#include <QtGlobal>

namespace scnstore {

/// How far a table of a day file has been forwarded. The first reading tells tables of one name apart:
/// each run of a day has its own. The last one shows whether the rest of the table is still the same.
struct TablePlace
{
    qint64 firstTime = 0;
    qint64 lastId = 0; ///< 0: nothing was forwarded.
    qint64 lastTime = 0;
    quint64 lastValueBits = 0;
};

} // namespace scnstore
