#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QtGlobal>

namespace scnstore {

/// One line on the terminal that counts what was done, and goes at the end. Nothing if the standard
/// error is no terminal, or if what is counted goes to one itself.
class ProgressLine
{
public:
    /// `unit` is what is counted: "rows". `target` is the descriptor that it is written to.
    explicit ProgressLine(const QString& unit, int target = -1);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Shows the count if the last one was shown some time ago.
    void show(qint64 count);

private:
    QString m_unit;
    bool m_isTerminal;
    bool m_isShown = false;
    QElapsedTimer m_sinceShown;
};

} // namespace scnstore
