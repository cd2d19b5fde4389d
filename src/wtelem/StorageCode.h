/// The one-byte code that tells how a value lies in an element data file. It is stored in every
/// value's tag and in the column definitions of the catalogue (docs/file-format.md).
#pragma once

#include <cstdint>

#include "base/zvb_type.h"

enum class StorageCode : std::uint8_t {
  none = 0,  ///< of a column that was never defined; its values are stored as texts
  boolean = 1,
  date = 2,
  integer = 3,
  real = 4,
  text = 5,
};

constexpr StorageCode storageCodeOf(zvbType type) noexcept {
  switch (type) {
    case zvbTypeBoolean:
      return StorageCode::boolean;
    case zvbTypeInteger:
      return StorageCode::integer;
    case zvbTypeReal:
      return StorageCode::real;
    case zvbTypeDate:
      return StorageCode::date;
    default:
      return StorageCode::text;
  }
}

constexpr zvbType typeOf(StorageCode code) noexcept {
  switch (code) {
    case StorageCode::boolean:
      return zvbTypeBoolean;
    case StorageCode::date:
      return zvbTypeDate;
    case StorageCode::integer:
      return zvbTypeInteger;
    case StorageCode::real:
      return zvbTypeReal;
    default:
      return zvbTypeString;
  }
}
