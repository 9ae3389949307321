#pragma once

#include "buildtree.h"

#include <QStringList>

/// The rules of the layers, each as a list of its breaches, one sentence a breach.
namespace LayerRules {

/// Every source and header belongs to a target, and every quoted #include is a file of the tree.
QStringList strayFiles(const BuildTree& tree);

/// A target links what its files include.
QStringList missingLinks(const BuildTree& tree);

/// A target's files include what it links.
QStringList needlessLinks(const BuildTree& tree);

/// A target links only what CMake has read before it.
QStringList upwardLinks(const BuildTree& tree);

/// No folders include each other, not in a roundabout way either.
QStringList circles(const BuildTree& tree);

} // namespace LayerRules
