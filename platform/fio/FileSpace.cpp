#include "fio/FileSpace.h"

#include <algorithm>

namespace {

constexpr std::int64_t kibibyte = 1024;
constexpr std::int64_t mebibyte = 1024 * kibibyte;

/// For how many bytes one look or one reservation is good.
constexpr std::int64_t ahead = mebibyte;
/// With less free space than this, what is needed is reserved, and nothing for speed: a reservation
/// for speed would take what other files need. To look for free space takes a third of a
/// microsecond a file; to reserve and give back takes 10 on ext4, which would make tables of a few
/// rows half as slow again, and 1 in memory.
constexpr std::int64_t plenty = 64 * ahead;
/// Where space is scarce, a file that goes on growing reserves twice as much each time.
constexpr std::int64_t firstStep = 4 * kibibyte;
constexpr std::int64_t largestStep = 128 * kibibyte;
/// The part of the free space that a step may take.
constexpr std::int64_t stepsInRoom = 16;

/// Files of fewer bytes reserve nothing ahead: they would be closed before it paid.
constexpr std::int64_t leastAhead = 64 * kibibyte;
/// How much of a reservation ahead has to be left for it not to be renewed.
constexpr std::int64_t leastLeft = 128 * kibibyte;

constexpr std::int64_t roundUp(std::int64_t value, std::int64_t unit) noexcept {
  return (value + unit - 1) / unit * unit;
}

}  // namespace

int FileSpace::assure(fioSystem::File file, std::int64_t offset, std::int64_t size) noexcept {
  const std::int64_t assured = std::max<std::int64_t>(endFrom(offset) - offset, 0);
  if (size <= assured) {
    return npFioSuccess;
  }
  offset += assured;
  size -= assured;
  const fioSystem::Room room = fioSystem::room(file);
  if (size > room.sizeLimit - offset) {
    return npFioDiskFull;
  }
  if (mayReserve_ && room.freeBytes < plenty) {
    reservesAhead_ = false;
    return assureScarce(file, offset, size, room);
  }
  reservesAhead_ = mayReserve_ && !room.isInMemory && !aheadFailed_;
  extend(offset, offset + std::min(std::max(size, ahead), room.sizeLimit - offset));
  return npFioSuccess;
}

/// A step that fails may have taken a part, which counts as reserved.
int FileSpace::assureScarce(fioSystem::File file, std::int64_t offset, std::int64_t size,
                            const fioSystem::Room& room) noexcept {
  step_ = std::clamp(std::min(step_ * 2, room.freeBytes / stepsInRoom), firstStep, largestStep);
  for (const std::int64_t wanted : {std::max(step_, size), size}) {
    const std::int64_t end = std::min(roundUp(offset + wanted, room.blockSize), room.sizeLimit);
    const int status = fioSystem::reserve(file, offset, end - offset);
    if (status != npFioSuccess && status != npFioDiskFull) {
      mayReserve_ = false;  // this file system cannot: the write itself will tell
      return assure(file, offset, size);
    }
    reservedEnd_ = std::max(reservedEnd_, end);
    if (status == npFioSuccess) {
      extend(offset, end);
      return npFioSuccess;
    }
    step_ = 0;
  }
  return npFioDiskFull;
}

void FileSpace::extend(std::int64_t offset, std::int64_t end) noexcept {
  if (offset < begin_ || offset > end_) {
    begin_ = offset;
    end_ = end;
  }
  end_ = std::max(end_, end);
}

void FileSpace::reserveAhead(fioSystem::File file, std::int64_t offset,
                             std::int64_t size) noexcept {
  const std::int64_t end = offset + size;
  if (!reservesAhead_ || size < leastAhead || end + leastLeft <= reservedEnd_) {
    return;
  }
  const fioSystem::Room room = fioSystem::room(file);
  if (room.freeBytes < plenty || end + ahead > room.sizeLimit) {
    reservesAhead_ = false;
    return;
  }
  const std::int64_t from = std::max(offset, reservedEnd_);
  reservedEnd_ = end + ahead;
  if (fioSystem::reserve(file, from, reservedEnd_ - from) == npFioSuccess) {
    extend(offset, reservedEnd_);
    return;
  }
  reservesAhead_ = false;
  aheadFailed_ = true;
  giveBack(file);
}

void FileSpace::cutAt(std::int64_t size) noexcept {
  end_ = std::min(end_, size);
  reservedEnd_ = 0;
}

void FileSpace::giveBack(fioSystem::File file) noexcept {
  std::int64_t size = 0;
  if (reservedEnd_ != 0 && fioSystem::size(file, &size) == npFioSuccess && size < reservedEnd_) {
    (void)fioSystem::truncate(file, size);
    end_ = std::min(end_, size);
  }
  reservedEnd_ = 0;
}
