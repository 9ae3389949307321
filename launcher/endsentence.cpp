#include "launcher/endsentence.h"

#include <QCoreApplication>

namespace scnlauncher {
namespace {

QString text(const char* source)
{
    return QCoreApplication::translate("EndSentence", source);
}

} // namespace

QString endSentence(const ChildEnd& end, const QString& program, AfterEnd afterEnd)
{
    if (!end.hasStarted) {
        return text("程序没有启动：%1。请重新安装它。").arg(program);
    }
    const QString how = end.hasCrashed ? text("程序意外终止（信号 %1），请查看日志中的原因。")
                                       : text("程序已退出（返回值 %1），请查看日志中的原因。");
    const QString scan = afterEnd == AfterEnd::ScanGoesOn
                             ? text("仪器如在扫描，会继续扫描；重新启动会停止扫描。")
                             : text("模拟仪器也随之结束。");
    return how.arg(end.exitCode) + scan;
}

} // namespace scnlauncher
