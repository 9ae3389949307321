#pragma once

#include <QString>

/// Style sheet of flat dark buttons.
QString flatButtonStyle();
