#pragma once

/// Makes the files of the resource bundle known: ":/qss/", ":/dark/" and ":/image/". A bundle in a
/// static library is not linked without this call; more than one call does no harm.
void initResources();
