// Stands in for a platform's VISA library: the seven operations under their published names. It
// opens every resource and answers every query with its own name; opening also prints whether the
// program has registered its meta-types. Built once complete and once without one operation.

#include "visa/visatypes.h"

#include <QMetaType>

#include <unistd.h>

#include <cstring>
#include <string>

using namespace scn::visa;

namespace {

constexpr ViSession kResourceManager = 77;
constexpr ViSession kSession = 78;

void say(const std::string& text)
{
    const std::string line = "library: " + text + "\n";
    const auto written = ::write(STDOUT_FILENO, line.data(), line.size());
    static_cast<void>(written);
}

} // namespace

extern "C" {

ViStatus SCN_VISA_CALL viOpenDefaultRM(ViSession* resourceManager)
{
    say("viOpenDefaultRM");
    *resourceManager = kResourceManager;
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viOpen(ViSession resourceManager, const ViChar* resource, ViAccessMode,
                              ViUInt32, ViSession* session)
{
    if (QMetaType::type("ExportResult") != QMetaType::UnknownType) {
        say("meta-types are registered");
    }
    say("viOpen " + std::to_string(resourceManager) + " " + resource);
    *session = kSession;
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viClose(ViObject object)
{
    say("viClose " + std::to_string(object));
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viSetAttribute(ViObject object, ViAttr, ViAttrState value)
{
    say("viSetAttribute " + std::to_string(object) + " " + std::to_string(value));
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viStatusDesc(ViObject, ViStatus, ViChar* text)
{
    std::strcpy(text, "text of the library");
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viRead(ViSession, ViByte* buffer, ViUInt32, ViUInt32* received)
{
    constexpr char kReply[] = "platform library\n";
    *received = sizeof kReply - 1;
    std::memcpy(buffer, kReply, *received);
    return VI_SUCCESS_TERM_CHAR;
}

#ifndef SCN_LEAVE_OUT_WRITE
ViStatus SCN_VISA_CALL viWrite(ViSession session, const ViByte*, ViUInt32 count, ViUInt32* sent)
{
    say("viWrite " + std::to_string(session) + " " + std::to_string(count));
    *sent = count;
    return VI_SUCCESS;
}
#endif

} // extern "C"
