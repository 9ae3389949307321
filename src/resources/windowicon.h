#pragma once

#include <QIcon>

/// The icon of all windows, in each size that desktops ask for.
QIcon windowIcon();
