#include "base/zvb_type.h"

const char* zvbTypeToString(zvbType type) noexcept {
  switch (type) {
    case zvbTypeBoolean:
      return "boolean";
    case zvbTypeInteger:
      return "integer";
    case zvbTypeReal:
      return "real";
    case zvbTypeDate:
      return "date";
    case zvbTypeString:
    default:
      return "string";
  }
}
