#include "app/launcharguments.h"

#include "state/globals.h"

#include <QDebug>

QString resourceFromArguments(const QStringList& arguments)
{
    return arguments.value(1).section(QLatin1Char(';'), 0, 0);
}

bool validateLaunchArguments(const QStringList& arguments)
{
    if (arguments.size() >= 2 && arguments.at(1) == g_resourceName) {
        return true;
    }
    qCritical() << "错误：安全参数验证失败";
    return false;
}
