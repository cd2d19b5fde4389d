/// System calls that fail on purpose. The program has calls of its own in front of those that the
/// file layer makes: they go to the system's, and some of them fail while a SystemFaults lives.
#pragma once

#include <cstdint>

/// A bit each, for sets of them.
namespace call {
inline constexpr unsigned open = 1U << 0;
inline constexpr unsigned close = 1U << 1;
inline constexpr unsigned read = 1U << 2;
inline constexpr unsigned write = 1U << 3;
inline constexpr unsigned size = 1U << 4;
inline constexpr unsigned describe = 1U << 5;
inline constexpr unsigned truncate = 1U << 6;
inline constexpr unsigned unlink = 1U << 7;
inline constexpr unsigned lock = 1U << 8;
inline constexpr unsigned reserve = 1U << 9;
inline constexpr unsigned fileSystem = 1U << 10;
inline constexpr unsigned advise = 1U << 11;
inline constexpr unsigned limit = 1U << 12;
inline constexpr unsigned random = 1U << 13;
inline constexpr unsigned list = 1U << 14;
inline constexpr unsigned all = (1U << 15) - 1;
}  // namespace call

/// The system's numbers for reasons to fail; `none` where it has no such reason.
namespace code {
inline constexpr int none = -1;
extern const int inputOutput, diskFull, quotaUsedUp, fileTooLarge, tooManyFiles, outOfMemory,
    accessDenied, readOnlyMedium, notFound, inUse, unheardOf, unsupported, interrupted;
}  // namespace code

struct Fault {
  enum class Effect {
    fails,          // with `code`
    transfersLess,  // of a read or write: half of what was asked for
    transfersNone,
  };
  const char* name;
  unsigned calls;  // to which it happens
  int code;        // of those above
  int status;      // what the file layer makes of it
  Effect effect = Effect::fails;
  bool lasts = true;      // it can go on for ever
  bool isHidden = false;  // the file layer deals with it, and nobody else may notice
};

/// While it lives, call number `first` (from 0) of those that the fault can happen to meets it, and
/// with `lasting` all that follow; on every thread. There is one at a time.
class SystemFaults {
 public:
  SystemFaults(const Fault& fault, std::int64_t first, bool lasting) noexcept;
  SystemFaults(const SystemFaults&) = delete;
  SystemFaults& operator=(const SystemFaults&) = delete;
  ~SystemFaults();

  /// The calls that have met the fault.
  [[nodiscard]] unsigned met() const noexcept;
  /// True when one of them was on a catalogue.
  [[nodiscard]] bool metCatalogue() const noexcept;
  /// The file of the first of them; empty when it has none.
  [[nodiscard]] const char* file() const noexcept;
};

// What follows is for the calls in front of the system's.
namespace call {

/// What happens to those that meet it; only while a SystemFaults lives.
[[nodiscard]] const Fault& currentFault() noexcept;

/// Whether a call of this kind, which is one more of them, is to meet the fault.
[[nodiscard]] bool strikes(unsigned kind) noexcept;

/// Remembers one that did, and the path of its file.
void note(unsigned kind, const char* path) noexcept;

}  // namespace call
