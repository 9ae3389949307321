#pragma once

#include <QMetaType>
#include <QString>
#include <QVector>

namespace scnlauncher {

/// An instrument, or a port that may lead to one.
struct FoundInstrument
{
    QString name;
    QString resource;
    /// Why it cannot be opened; empty if it can.
    QString problem;
};

using FoundInstruments = QVector<FoundInstrument>;

} // namespace scnlauncher

Q_DECLARE_METATYPE(scnlauncher::FoundInstruments)
