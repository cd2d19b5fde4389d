/// Configuration options, such as "BASE/TEMP", the directories for temporary files.
///
/// An option is named "SECTION/NAME". Its value is what the program itself has set, else the
/// environment variable ZVB_SECTION_NAME, else `NAME=` under `[SECTION]` in the ini file that the
/// environment variable ZVB_CONFIG names. Names are compared without case in the ini file.
/// Thread rule: may be used from any thread.
#pragma once

#include "base/ZvbString.h"
#include "base/zvb_export.h"

class ZVB_API ZvbConfigOptions {
 public:
  /// Sets an option for this program, before all other sources; null takes the setting back. False
  /// when memory is short.
  [[nodiscard]] virtual bool set(const ZvbString& key, const ZvbString& value) noexcept = 0;
  /// Takes back all that set() has set.
  virtual void clear() noexcept = 0;
  /// Puts the option's value into *value; false, and *value as it was, when there is none. The last
  /// argument is reserved and given as 0.
  virtual bool get(const ZvbString& key, ZvbString* value, int reserved) noexcept = 0;

 protected:
  ~ZvbConfigOptions() = default;
};

/// The options of this program; `set` is given empty. Never null, and not the caller's to free.
[[nodiscard]] ZVB_API ZvbConfigOptions* zvbGetConfigOptions(const ZvbString& set) noexcept;
