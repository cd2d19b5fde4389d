/// The URI of a work table, built from its pieces; ZvURI.h tells its form and reads it.
/// Thread rule: one thread at a time uses an object.
#pragma once

#include <cstdint>

#include "base/ZvbString.h"
#include "base/zvb_export.h"

class ZVB_API ZvWorkTableURI {
 public:
  /// Frees the object.
  virtual void release() noexcept = 0;
  /// The text, in the one form that reading and building it again does not change.
  [[nodiscard]] virtual ZvbString toString() const noexcept = 0;
  /// Adds a column, see ZvURI.h: `type` is 0 for one of the table's columns, whose own name is
  /// `second` unless that is empty, else the zvbType of a constant. False with a text in *error
  /// when memory is short; the URI is then as it was.
  [[nodiscard]] virtual bool appendColumn(const ZvbString& name, const ZvbString& second,
                                          std::int32_t type, ZvbString* error) noexcept = 0;

 protected:
  ~ZvWorkTableURI() = default;
};

/// The URI of all rows of a table, or of `rowCount` rows from `firstRow` on, as yet without
/// columns. Null when the name is empty or memory is short. The caller releases the object. Any
/// thread may call.
[[nodiscard]] ZVB_API ZvWorkTableURI* getWorkTableURIFromComponents(
    const ZvbString& tableName) noexcept;
[[nodiscard]] ZVB_API ZvWorkTableURI* getWorkTableURIFromComponents(const ZvbString& tableName,
                                                                    std::int64_t firstRow,
                                                                    std::int64_t rowCount) noexcept;
