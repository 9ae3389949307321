#include "visa/visaprovider.h"

#include "visa/resourcename.h"
#include "visa/sessiontable.h"
#include "visa/statustext.h"

#include <cstring>
#include <string>

namespace scn::visa {
namespace {

/// Time-out of an open whose caller gives none.
constexpr ViUInt32 kDefaultOpenTimeoutMs = 3000;

/// Never destroyed: threads may read until the very end of the process.
SessionTable& sessions()
{
    static SessionTable* const table = new SessionTable;
    return *table;
}

/// The answer of a session operation to a handle that has no session.
ViStatus noSession(ViSession handle)
{
    return sessions().has(handle) ? VI_ERROR_NSUP_OPER : VI_ERROR_INV_OBJECT;
}

void store(ViUInt32* target, std::size_t count)
{
    if (target) {
        *target = static_cast<ViUInt32>(count);
    }
}

ViStatus SCN_VISA_CALL openDefaultRM(ViSession* resourceManager)
{
    if (!resourceManager) {
        return VI_ERROR_USER_BUF;
    }
    *resourceManager = sessions().addResourceManager();
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL open(ViSession resourceManager, const ViChar* resource,
                            ViAccessMode accessMode, ViUInt32 openTimeoutMs, ViSession* session)
{
    if (!session) {
        return VI_ERROR_USER_BUF;
    }
    *session = VI_NULL;
    if (!sessions().hasResourceManager(resourceManager)) {
        return VI_ERROR_INV_OBJECT;
    }
    if (accessMode != VI_NO_LOCK && accessMode != VI_LOAD_CONFIG) {
        return VI_ERROR_INV_ACC_MODE;
    }
    const auto name = parseResourceName(resource ? resource : "");
    if (!name) {
        return VI_ERROR_INV_RSRC_NAME;
    }
    OpenedTransport opened = openTransport(
        *name, Deadline::fromTimeout(openTimeoutMs == 0 ? kDefaultOpenTimeoutMs : openTimeoutMs));
    if (opened.status != VI_SUCCESS) {
        return opened.status;
    }
    *session = sessions().addSession(resourceManager,
                                     std::make_shared<Session>(std::move(opened.transport)));
    return *session == VI_NULL ? VI_ERROR_INV_OBJECT : VI_SUCCESS;
}

ViStatus SCN_VISA_CALL close(ViObject object)
{
    return sessions().close(object) ? VI_SUCCESS : VI_ERROR_INV_OBJECT;
}

ViStatus SCN_VISA_CALL setAttribute(ViObject object, ViAttr attribute, ViAttrState value)
{
    if (const auto session = sessions().session(object)) {
        return session->setAttribute(attribute, value);
    }
    return sessions().has(object) ? VI_ERROR_NSUP_ATTR : VI_ERROR_INV_OBJECT;
}

/// Ignores the object: the status of a failed open, or of a session that another thread has closed,
/// has a text, too.
ViStatus SCN_VISA_CALL statusDesc(ViObject, ViStatus status, ViChar* text)
{
    if (!text) {
        return VI_ERROR_USER_BUF;
    }
    const std::string known = statusText(status);
    std::memcpy(text, known.c_str(), known.size() + 1);
    return isKnownStatus(status) ? VI_SUCCESS : VI_WARN_UNKNOWN_STATUS;
}

ViStatus SCN_VISA_CALL read(ViSession handle, ViByte* buffer, ViUInt32 count, ViUInt32* received)
{
    store(received, 0);
    const auto session = sessions().session(handle);
    if (!session) {
        return noSession(handle);
    }
    if (!buffer) {
        return VI_ERROR_USER_BUF;
    }
    std::size_t moved = 0;
    const ViStatus status = session->read(reinterpret_cast<char*>(buffer), count, moved);
    store(received, moved);
    return status;
}

ViStatus SCN_VISA_CALL write(ViSession handle, const ViByte* buffer, ViUInt32 count, ViUInt32* sent)
{
    store(sent, 0);
    const auto session = sessions().session(handle);
    if (!session) {
        return noSession(handle);
    }
    if (!buffer) {
        return VI_ERROR_USER_BUF;
    }
    std::size_t moved = 0;
    const ViStatus status = session->write(reinterpret_cast<const char*>(buffer), count, moved);
    store(sent, moved);
    return status;
}

} // namespace

const VisaTable& providerVisaTable()
{
    static const VisaTable table = {openDefaultRM, open, close, setAttribute,
                                    statusDesc,    read, write};
    return table;
}

} // namespace scn::visa
