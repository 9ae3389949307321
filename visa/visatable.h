#pragma once

#include "visa/visatypes.h"

namespace scn::visa {

/// The seven VISA operations that the program uses, as one table: taken from the platform's VISA
/// library, from this folder's provider or, in tests, from a scripted fake. None is null.
struct VisaTable
{
    ViOpenDefaultRMFunction viOpenDefaultRM;
    ViOpenFunction viOpen;
    ViCloseFunction viClose;
    ViSetAttributeFunction viSetAttribute;
    ViStatusDescFunction viStatusDesc;
    ViReadFunction viRead;
    ViWriteFunction viWrite;
};

} // namespace scn::visa
