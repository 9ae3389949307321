#pragma once

#include <QString>
#include <QVector>

/// A type, or an enumerator that needs no type before it, in a file of the tree.
struct DeclaredName
{
    QString name;

    /// The namespace, such as "scn::visa"; empty for none.
    QString scope;
};

/// What a C++ source declares outside classes, functions and unnamed namespaces. Declarations without a body
/// do not count, except for aliases.
QVector<DeclaredName> declaredNames(const QString& source);
