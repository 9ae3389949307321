#include "resources/windowicon.h"

#include "resources/resources.h"

QIcon windowIcon()
{
    initResources();
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        icon.addFile(QStringLiteral(":/image/scn4070a-%1.png").arg(size));
    }
    return icon;
}
