#pragma once

#include <QPair>
#include <QString>
#include <QVector>

/// Runs one test function of this program in its own process with extra environment variables: a
/// zone or clock that cannot be changed in a running program.
class ChildScene
{
public:
    /// Set in such a process's environment.
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
