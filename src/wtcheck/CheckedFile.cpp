#include "wtcheck/CheckedFile.h"

#include <algorithm>
#include <cstring>

#include "wtelem/FileFailure.h"
#include "wtelem/messages.h"

bool CheckedFile::open(const TempDirectories& directories, const char* name,
                       SearchOrder order) noexcept {
  if (!openFile(directories, name, npFioRead, order, &search_)) {
    return false;
  }
  size_ = np_fio_seek64(search_.file, 0, npFioFromEnd);
  if (size_ < 0 || np_fio_seek64(search_.file, 0, npFioFromStart) != 0) {
    search_.status = np_fio_status(search_.file);
    return false;
  }
  return true;
}

ZvbString CheckedFile::openingFailure(const char* what) const noexcept {
  const char* description = np_fio_errdesc(status());
  if (!search_.joined) {
    return WT_MESSAGE(pathNotJoined, what, status(), description);
  }
  return description != nullptr ? WT_MESSAGE(openFailed, path(), description)
                                : WT_MESSAGE(openFailedStatus, path(), status());
}

bool CheckedFile::failReading() noexcept {
  report_.fail(fileFailure(search_.file, WT_MESSAGE(shortRead, path())));
  return false;
}

bool CheckedFile::read(unsigned char* bytes, int count) noexcept {
  if (np_fio_getb(search_.file, bytes, count) != count) {
    return failReading();
  }
  position_ += count;
  return true;
}

bool CheckedFile::moveTo(std::int64_t position) noexcept {
  if (position == position_) {
    return true;
  }
  if (np_fio_seek64(search_.file, position - position_, npFioFromHere) != position) {
    return failReading();
  }
  position_ = position;
  return true;
}

bool CheckedFile::passText(std::int64_t length, std::int64_t* passed, bool* endsInZero) noexcept {
  *passed = 0;
  *endsInZero = false;
  while (*passed < length && !*endsInZero) {
    const auto count = static_cast<int>(std::min<std::int64_t>(length - *passed, npFioPeekLimit));
    const unsigned char* bytes = np_fio_peek(search_.file, count);
    if (bytes == nullptr) {
      return failReading();
    }
    const void* zero = std::memchr(bytes, 0, static_cast<std::size_t>(count));
    *endsInZero = zero != nullptr;
    const auto taken =
        *endsInZero ? static_cast<int>(static_cast<const unsigned char*>(zero) - bytes) + 1 : count;
    np_fio_consume(search_.file, taken);
    position_ += taken;
    *passed += taken;
  }
  return true;
}
