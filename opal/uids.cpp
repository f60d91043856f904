#include "uids.h"

namespace opal {

const char* StatusName(int status) {
  switch (status) {
    case 0x00: return "SUCCESS";
    case 0x01: return "NOT_AUTHORIZED";
    case 0x03: return "SP_BUSY";
    case 0x04: return "SP_FAILED";
    case 0x05: return "SP_DISABLED";
    case 0x06: return "SP_FROZEN";
    case 0x07: return "NO_SESSIONS_AVAILABLE";
    case 0x08: return "UNIQUENESS_CONFLICT";
    case 0x09: return "INSUFFICIENT_SPACE";
    case 0x0A: return "INSUFFICIENT_ROWS";
    case 0x0B: return "INVALID_FUNCTION";
    case 0x0C: return "INVALID_PARAMETER";
    case 0x0D: return "INVALID_REFERENCE";
    case 0x0F: return "TPER_MALFUNCTION";
    case 0x10: return "TRANSACTION_FAILURE";
    case 0x11: return "RESPONSE_OVERFLOW";
    case 0x12: return "AUTHORITY_LOCKED_OUT";
    case 0x3F: return "FAIL";
    default: return "Unknown status code";
  }
}

}  // namespace opal
