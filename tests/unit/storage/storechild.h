#pragma once

#include <QPair>
#include <QString>
#include <QVector>

/// One test function of this program, run in a process of its own that has further environment
/// variables: a zone or a clock that cannot be changed under a running program.
class ChildScene
{
public:
    /// Set in the environment of such a process.
    static constexpr const char* kMark = "SCN_CHILD_SCENE";

    ChildScene(const QString& function, const QVector<QPair<QString, QString>>& environment);

    /// Whether the function ran and passed.
    bool passed() const { return m_passed; }

    /// What the process printed.
    QString output() const { return m_output; }

private:
    bool m_passed = false;
    QString m_output;
};
