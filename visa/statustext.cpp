#include "visa/statustext.h"

#include <cstdio>

namespace scn::visa {
namespace {

struct StatusRow
{
    ViStatus status;
    const char* text;
};

constexpr StatusRow kStatusRows[] = {
    {VI_SUCCESS, "VI_SUCCESS: done"},
    {VI_SUCCESS_TERM_CHAR, "VI_SUCCESS_TERM_CHAR: the termination character ended the read"},
    {VI_SUCCESS_MAX_CNT, "VI_SUCCESS_MAX_CNT: as many bytes were read as were asked for"},
    {VI_SUCCESS_DEV_NPRESENT,
     "VI_SUCCESS_DEV_NPRESENT: the session is open, but the device does not respond"},
    {VI_WARN_CONFIG_NLOADED, "VI_WARN_CONFIG_NLOADED: the stored configuration was not loaded"},
    {VI_WARN_NSUP_ATTR_STATE, "VI_WARN_NSUP_ATTR_STATE: this attribute value has no effect here"},
    {VI_WARN_UNKNOWN_STATUS, "VI_WARN_UNKNOWN_STATUS: there is no text for this status"},
    {VI_ERROR_SYSTEM_ERROR, "VI_ERROR_SYSTEM_ERROR: the operating system reported a failure"},
    {VI_ERROR_INV_OBJECT, "VI_ERROR_INV_OBJECT: there is no such session"},
    {VI_ERROR_RSRC_LOCKED, "VI_ERROR_RSRC_LOCKED: another session has locked the resource"},
    {VI_ERROR_RSRC_NFOUND,
     "VI_ERROR_RSRC_NFOUND: the resource is not present or cannot be reached"},
    {VI_ERROR_INV_RSRC_NAME, "VI_ERROR_INV_RSRC_NAME: the resource string is malformed"},
    {VI_ERROR_INV_ACC_MODE, "VI_ERROR_INV_ACC_MODE: the access mode is not available"},
    {VI_ERROR_TMO, "VI_ERROR_TMO: the time-out expired before the operation was complete"},
    {VI_ERROR_CLOSING_FAILED, "VI_ERROR_CLOSING_FAILED: the session could not be closed properly"},
    {VI_ERROR_NSUP_ATTR, "VI_ERROR_NSUP_ATTR: the resource has no such attribute"},
    {VI_ERROR_NSUP_ATTR_STATE, "VI_ERROR_NSUP_ATTR_STATE: the attribute cannot take this value"},
    {VI_ERROR_ATTR_READONLY, "VI_ERROR_ATTR_READONLY: the attribute cannot be set"},
    {VI_ERROR_ABORT, "VI_ERROR_ABORT: the session was closed during the transfer"},
    {VI_ERROR_ALLOC, "VI_ERROR_ALLOC: not enough system resources"},
    {VI_ERROR_IO, "VI_ERROR_IO: the transfer failed"},
    {VI_ERROR_NSUP_OPER, "VI_ERROR_NSUP_OPER: this object has no such operation"},
    {VI_ERROR_ASRL_PARITY, "VI_ERROR_ASRL_PARITY: parity error on the serial line"},
    {VI_ERROR_ASRL_FRAMING, "VI_ERROR_ASRL_FRAMING: framing error on the serial line"},
    {VI_ERROR_ASRL_OVERRUN, "VI_ERROR_ASRL_OVERRUN: bytes were lost on the serial line"},
    {VI_ERROR_USER_BUF, "VI_ERROR_USER_BUF: a buffer that was handed over is not usable"},
    {VI_ERROR_RSRC_BUSY, "VI_ERROR_RSRC_BUSY: the resource is in use"},
    {VI_ERROR_INV_PARAMETER, "VI_ERROR_INV_PARAMETER: a parameter is not valid"},
    {VI_ERROR_CONN_LOST, "VI_ERROR_CONN_LOST: the connection of this session is lost"},
    {VI_ERROR_NPERMISSION, "VI_ERROR_NPERMISSION: no permission to use the resource; a device file "
                           "wants its group, dialout "
                           "for serial ports, plugdev by our udev rule for USB instruments"},
};

const char* knownText(ViStatus status)
{
    for (const StatusRow& row : kStatusRows) {
        if (row.status == status) {
            return row.text;
        }
    }
    return nullptr;
}

} // namespace

std::string statusText(ViStatus status)
{
    if (const char* const text = knownText(status)) {
        return text;
    }
    char text[64];
    std::snprintf(text, sizeof text, "unknown status 0x%08X", static_cast<unsigned>(status));
    return text;
}

bool isKnownStatus(ViStatus status)
{
    return knownText(status) != nullptr;
}

} // namespace scn::visa
