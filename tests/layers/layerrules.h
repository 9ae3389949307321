#pragma once

#include "buildtree.h"

#include <QStringList>

/// The rules of the layers, each as a list of its breaches, one sentence a breach.
namespace layerrules {

/// Every source and header belongs to a target.
QStringList strayFiles(const BuildTree& tree);

/// A target links what its files include.
QStringList missingLinks(const BuildTree& tree);

/// A target's files include what it links.
QStringList needlessLinks(const BuildTree& tree);

/// A target links only what CMake has read before it.
QStringList upwardLinks(const BuildTree& tree);

/// Every quoted #include is a file of the tree.
QStringList missingHeaders(const IncludeTree& tree);

/// A file includes none of a folder that the build reads after its own; `order` has the top folders.
QStringList upwardIncludes(const IncludeTree& tree, const QStringList& order);

/// No folders include each other, not in a roundabout way either.
QStringList folderCircles(const IncludeTree& tree);

/// No header and its sources need another that needs them, not in a roundabout way either. A source whose
/// name goes on after an underscore counts with the header of the name before it.
QStringList fileCircles(const IncludeTree& tree);

} // namespace layerrules
