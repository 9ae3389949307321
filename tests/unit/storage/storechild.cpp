#include "storechild.h"

#include "support/testprogram.h"

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>

namespace {

constexpr int kTimeoutMs = 60000;

} // namespace

ChildScene::ChildScene(const QString& function, const QVector<QPair<QString, QString>>& environment)
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QString::fromLatin1(kMark), function);
    for (const auto& variable : environment) {
        variables.insert(variable.first, variable.second);
    }
    QProcess child;
    child.setProcessEnvironment(variables);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(), {testprogram::runningTest(), function});
    if (!child.waitForFinished(kTimeoutMs)) {
        child.kill();
        child.waitForFinished();
    }
    m_output = QString::fromUtf8(child.readAll());
    // Two more than the function count as passed: the initial and the final call.
    m_passed = child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0 &&
               m_output.contains(QStringLiteral("Totals: 3 passed, 0 failed, 0 skipped"));
}
