#pragma once

#include <QString>

/// One caption of a two-tier header and the run of sections below it, in logical indices.
struct HeaderGroup
{
    QString title;
    int startColumn = 0;
    int columnCount = 0;
};
