#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

/// A call of scn4070a-store and what came of it.
struct StoreRun
{
    int exitCode = -1; ///< -1 if it crashed or did not end.
    QByteArray output;
    QByteArray errors;
};

inline StoreRun
runStore(const QStringList& arguments,
         const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    constexpr int kPatienceMs = 120000;
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(SCN_STORE), arguments, QIODevice::ReadOnly);
    const bool ended = process.waitForFinished(kPatienceMs);
    const bool isWhole = ended && process.exitStatus() == QProcess::NormalExit;
    return {isWhole ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}
