#pragma once

/// Registers the resource bundle: ":/qss/", ":/dark/" and ":/image/". A bundle in a static library
/// is not linked without this call; repeated calls are harmless.
void initResources();
