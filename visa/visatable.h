#pragma once

#include "visa/visatypes.h"

namespace scn::visa {

/// The seven VISA operations that the program uses, as one table: filled from the platform's VISA
/// library, from the provider of this folder or, in tests, by a scripted fake. None is null.
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
