#pragma once

#include <QString>

/// A caption of a two-tier header and the run of sections below it, by logical index.
struct HeaderGroup
{
    QString title;
    int startColumn = 0;
    int columnCount = 0;
};
