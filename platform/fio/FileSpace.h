/// The space that an open file finds on its disk for what will be written into it.
///
/// Bytes that a buffer has accepted should not meet a full disk later, when whoever wrote them is
/// long gone. So space is assured before the buffer accepts them. Where the file system has plenty
/// of it a look is enough, once a megabyte. Where it has little, what is assured is reserved: in
/// small steps at first, since every other file needs space too. A file that grows on a disk with
/// plenty has space reserved ahead besides, as writing into it is faster.
///
/// What cannot be known stays with the write itself: quotas of users, file systems that cannot
/// reserve, and others that fill a disk with plenty before a megabyte is written.
#pragma once

#include <cstdint>

#include "fio/np_fio_system.h"

class FileSpace {
 public:
  /// Of a file that nobody else writes. Only then is space reserved: it is given back by cutting
  /// the file at its end, which would cut off what others have appended.
  void allowReserving() noexcept { mayReserve_ = true; }

  /// Sees to it that `size` bytes at `offset` will find space. npFioDiskFull when they will not.
  [[nodiscard]] int assure(fioSystem::File file, std::int64_t offset, std::int64_t size) noexcept;
  /// The end of the space that is assured in one piece from `offset` on; at most `offset`: there is
  /// none.
  [[nodiscard]] std::int64_t endFrom(std::int64_t offset) const noexcept {
    return offset >= begin_ ? end_ : offset;
  }

  /// For speed: has space reserved behind the `size` bytes at `offset` that are about to be
  /// written.
  void reserveAhead(fioSystem::File file, std::int64_t offset, std::int64_t size) noexcept;

  /// The file was cut at `size`: nothing is assured or reserved behind it any more.
  void cutAt(std::int64_t size) noexcept;
  /// Gives back what was reserved and not written.
  void giveBack(fioSystem::File file) noexcept;

 private:
  [[nodiscard]] int assureScarce(fioSystem::File file, std::int64_t offset, std::int64_t size,
                                 const fioSystem::Room& room) noexcept;
  void extend(std::int64_t offset, std::int64_t end) noexcept;

  std::int64_t begin_ = 0;  // of the space that is assured
  std::int64_t end_ = 0;
  std::int64_t reservedEnd_ = 0;  // of the space that was reserved; 0: none
  std::int64_t step_ = 0;         // bytes, to reserve next where there is little space
  bool mayReserve_ = false;
  bool reservesAhead_ = false;  // on a disk where that is faster and takes nothing from others
  bool aheadFailed_ = false;
};
