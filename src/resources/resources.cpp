#include "resources/resources.h"

#include <QtGlobal>

void initResources()
{
    Q_INIT_RESOURCE(scn_resources);
}
