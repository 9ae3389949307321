#pragma once

#include <cstdint>

/// The part of the published VISA standard that this program uses: its types, attribute and status
/// numbers, and the prototypes of seven operations, under the standard's names. No VISA library
/// needs to be installed.

// In the 32-bit Windows libraries the callee cleans up the stack; others have one convention.
#if defined(_WIN32) && !defined(_WIN64)
#define SCN_VISA_CALL __stdcall
#else
#define SCN_VISA_CALL
#endif

namespace scn::visa {

using ViChar = char;
using ViByte = std::uint8_t;
using ViUInt16 = std::uint16_t;
using ViUInt32 = std::uint32_t;
using ViInt32 = std::int32_t;

/// Completion code: 0 is success, positive a success or warning with details, negative an error.
using ViStatus = ViInt32;
/// Handle of any object: the resource manager or an instrument session. 0 is no object.
using ViObject = ViUInt32;
using ViSession = ViObject;
using ViAccessMode = ViUInt32;
/// Number of an attribute.
using ViAttr = ViUInt32;
/// Value of an attribute; as wide as a pointer.
using ViAttrState = std::uintptr_t;

constexpr ViSession VI_NULL = 0;

/// Size of the text buffer that viStatusDesc() requires, in bytes.
constexpr ViUInt32 kViStatusTextSize = 256;

/// Special time-outs, in milliseconds.
constexpr ViUInt32 VI_TMO_IMMEDIATE = 0;
constexpr ViUInt32 VI_TMO_INFINITE = 0xFFFFFFFFU;

/// Access modes of viOpen().
constexpr ViAccessMode VI_NO_LOCK = 0;
constexpr ViAccessMode VI_LOAD_CONFIG = 4;

/// Attributes.
constexpr ViAttr VI_ATTR_TERMCHAR = 0x3FFF0018U;
constexpr ViAttr VI_ATTR_TMO_VALUE = 0x3FFF001AU;
constexpr ViAttr VI_ATTR_ASRL_BAUD = 0x3FFF0021U;
constexpr ViAttr VI_ATTR_ASRL_DATA_BITS = 0x3FFF0022U;
constexpr ViAttr VI_ATTR_ASRL_PARITY = 0x3FFF0023U;
constexpr ViAttr VI_ATTR_ASRL_STOP_BITS = 0x3FFF0024U;
constexpr ViAttr VI_ATTR_TERMCHAR_EN = 0x3FFF0038U;

/// Values of VI_ATTR_ASRL_PARITY.
constexpr ViAttrState VI_ASRL_PAR_NONE = 0;
constexpr ViAttrState VI_ASRL_PAR_ODD = 1;
constexpr ViAttrState VI_ASRL_PAR_EVEN = 2;
constexpr ViAttrState VI_ASRL_PAR_MARK = 3;
constexpr ViAttrState VI_ASRL_PAR_SPACE = 4;

/// Values of VI_ATTR_ASRL_STOP_BITS: tenths of a bit.
constexpr ViAttrState VI_ASRL_STOP_ONE = 10;
constexpr ViAttrState VI_ASRL_STOP_ONE5 = 15;
constexpr ViAttrState VI_ASRL_STOP_TWO = 20;

/// A completion code from its published unsigned form.
constexpr ViStatus viStatusCode(ViUInt32 number)
{
    return number <= 0x7FFFFFFFU
               ? static_cast<ViStatus>(number)
               : static_cast<ViStatus>(static_cast<std::int64_t>(number) - 0x100000000LL);
}

/// Completion codes.
constexpr ViStatus VI_SUCCESS = 0;
constexpr ViStatus VI_SUCCESS_TERM_CHAR = viStatusCode(0x3FFF0005U);
constexpr ViStatus VI_SUCCESS_MAX_CNT = viStatusCode(0x3FFF0006U);
constexpr ViStatus VI_WARN_CONFIG_NLOADED = viStatusCode(0x3FFF0077U);
constexpr ViStatus VI_SUCCESS_DEV_NPRESENT = viStatusCode(0x3FFF007DU);
constexpr ViStatus VI_WARN_NSUP_ATTR_STATE = viStatusCode(0x3FFF0084U);
constexpr ViStatus VI_WARN_UNKNOWN_STATUS = viStatusCode(0x3FFF0085U);
constexpr ViStatus VI_ERROR_SYSTEM_ERROR = viStatusCode(0xBFFF0000U);
constexpr ViStatus VI_ERROR_INV_OBJECT = viStatusCode(0xBFFF000EU);
constexpr ViStatus VI_ERROR_RSRC_LOCKED = viStatusCode(0xBFFF000FU);
constexpr ViStatus VI_ERROR_RSRC_NFOUND = viStatusCode(0xBFFF0011U);
constexpr ViStatus VI_ERROR_INV_RSRC_NAME = viStatusCode(0xBFFF0012U);
constexpr ViStatus VI_ERROR_INV_ACC_MODE = viStatusCode(0xBFFF0013U);
constexpr ViStatus VI_ERROR_TMO = viStatusCode(0xBFFF0015U);
constexpr ViStatus VI_ERROR_CLOSING_FAILED = viStatusCode(0xBFFF0016U);
constexpr ViStatus VI_ERROR_NSUP_ATTR = viStatusCode(0xBFFF001DU);
constexpr ViStatus VI_ERROR_NSUP_ATTR_STATE = viStatusCode(0xBFFF001EU);
constexpr ViStatus VI_ERROR_ATTR_READONLY = viStatusCode(0xBFFF001FU);
constexpr ViStatus VI_ERROR_ABORT = viStatusCode(0xBFFF0030U);
constexpr ViStatus VI_ERROR_ALLOC = viStatusCode(0xBFFF003CU);
constexpr ViStatus VI_ERROR_IO = viStatusCode(0xBFFF003EU);
constexpr ViStatus VI_ERROR_NSUP_OPER = viStatusCode(0xBFFF0067U);
constexpr ViStatus VI_ERROR_ASRL_PARITY = viStatusCode(0xBFFF006AU);
constexpr ViStatus VI_ERROR_ASRL_FRAMING = viStatusCode(0xBFFF006BU);
constexpr ViStatus VI_ERROR_ASRL_OVERRUN = viStatusCode(0xBFFF006CU);
constexpr ViStatus VI_ERROR_USER_BUF = viStatusCode(0xBFFF0071U);
constexpr ViStatus VI_ERROR_RSRC_BUSY = viStatusCode(0xBFFF0072U);
constexpr ViStatus VI_ERROR_INV_PARAMETER = viStatusCode(0xBFFF0078U);
constexpr ViStatus VI_ERROR_CONN_LOST = viStatusCode(0xBFFF00A6U);
constexpr ViStatus VI_ERROR_NPERMISSION = viStatusCode(0xBFFF00A8U);

/// The seven operations. They report a count only through a pointer that is not null.
using ViOpenDefaultRMFunction = ViStatus(SCN_VISA_CALL*)(ViSession* resourceManager);
using ViOpenFunction = ViStatus(SCN_VISA_CALL*)(ViSession resourceManager, const ViChar* resource,
                                                ViAccessMode accessMode, ViUInt32 openTimeoutMs,
                                                ViSession* session);
using ViCloseFunction = ViStatus(SCN_VISA_CALL*)(ViObject object);
using ViSetAttributeFunction = ViStatus(SCN_VISA_CALL*)(ViObject object, ViAttr attribute,
                                                        ViAttrState value);
using ViStatusDescFunction = ViStatus(SCN_VISA_CALL*)(ViObject object, ViStatus status,
                                                      ViChar* text);
using ViReadFunction = ViStatus(SCN_VISA_CALL*)(ViSession session, ViByte* buffer, ViUInt32 count,
                                                ViUInt32* received);
using ViWriteFunction = ViStatus(SCN_VISA_CALL*)(ViSession session, const ViByte* buffer,
                                                 ViUInt32 count, ViUInt32* sent);

} // namespace scn::visa
