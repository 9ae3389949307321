#include "warninglog.h"

#include "check.h"

#include <QtGlobal>

namespace {

QStringList g_lines;

void keepWarning(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    FUZZ_CHECK(type == QtWarningMsg);
    g_lines.append(text);
}

} // namespace

void beginWarningLog()
{
    static const QtMessageHandler before = qInstallMessageHandler(keepWarning);
    Q_UNUSED(before)
    g_lines.clear();
}

const QStringList& warningLog()
{
    return g_lines;
}
