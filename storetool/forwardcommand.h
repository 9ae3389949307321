#pragma once

#include <QStringList>

namespace scnstore {

/// "forward DIR... --to postgresql://... [--once]": copies readings into a database while they are taken.
int runForwardCommand(const QStringList& arguments);

} // namespace scnstore
