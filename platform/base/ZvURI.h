/// A URI that was read from a text. Those of work tables have this form:
///
///   zvwt:NAME[?rows=FIRST,COUNT][&col=NAME[,SECOND[,TYPE]]]...
///
/// The first parameter stands behind `?`, each further one behind `&`; `rows` occurs once at most.
/// A COUNT of -1 means to the end. A column is one of
///
///   col=NAME              the table's column NAME
///   col=NAME,SECOND       the table's column SECOND under the name NAME
///   col=NAME,SECOND,TYPE  a constant with the text SECOND and the zvbType TYPE; null when SECOND
///                         is empty
///
/// A column that the table has not is read as a constant text, SECOND or null.
/// Percent signs stand for bytes, as in `%2C` for a comma; letters, digits and `-._~` need none. A
/// scheme has two characters or more, so that `C:\x` is no URI. Of other schemes than zvwt, which
/// is recognised in any case, only the scheme is looked at.
///
/// For example, `zvwt:zvwt_ab12?rows=5,3&col=b&col=x,a&col=k,42,2&col=n,,3` is rows 5 to 7 with
/// column b, column a under the name x, the integer 42 as k and a null real as n.
/// Thread rule: any number of threads may read one object at once.
#pragma once

#include <cstdint>

#include "base/ZvbString.h"
#include "base/zvb_export.h"

class ZVB_API ZvURI {
 public:
  /// Frees the object.
  virtual void release() noexcept = 0;
  /// The scheme as it was written, without its colon.
  [[nodiscard]] virtual ZvbString getScheme() const noexcept = 0;
  /// Column `index`, from 0, decoded: a missing SECOND is empty, a missing TYPE 0. False, and
  /// nothing changed, when there is no such column.
  [[nodiscard]] virtual bool getColumn(std::int32_t index, ZvbString* name, ZvbString* second,
                                       std::int32_t* type) const noexcept = 0;
  [[nodiscard]] virtual std::int32_t getColumnCount() const noexcept = 0;
  /// The table's name, decoded; of another scheme all that follows the colon, as it was written.
  [[nodiscard]] virtual ZvbString getPath() const noexcept = 0;
  /// False, and nothing changed, when the URI has no range. Its numbers may be negative.
  [[nodiscard]] virtual bool getRowRange(std::int64_t* firstRow,
                                         std::int64_t* rowCount) const noexcept = 0;

 protected:
  ~ZvURI() = default;
};

/// Null when the text is no URI, or one of a work table with a malformed escape, number or
/// parameter, and when memory is short. The caller releases the object. Any thread may call.
[[nodiscard]] ZVB_API ZvURI* getURIFromURIString(const ZvbString& text) noexcept;
/// The same; *memoryShort tells whether that is why there is none.
[[nodiscard]] ZVB_API ZvURI* getURIFromURIString(const ZvbString& text, bool* memoryShort) noexcept;
