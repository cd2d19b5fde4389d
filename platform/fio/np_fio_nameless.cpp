/// Names for new files that nobody can guess, and files that have none.
#include <array>
#include <cstring>

#include "base/zvb_random.h"
#include "fio/np_fio_system.h"
#include "fio/np_fio_work.h"

namespace {

constexpr std::size_t randomCharacters = 16;

/// Adds random lower-case letters and digits and a terminator. Eight characters take 41 of a word's
/// 64 bits, so each is as likely as the others for all that matters.
bool appendRandomName(char* end) noexcept {
  static constexpr char alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  constexpr std::uint64_t letters = sizeof alphabet - 1;
  constexpr std::size_t perWord = 8;
  std::array<std::uint64_t, randomCharacters / perWord> words{};
  if (!zvbRandomBytes(words.data(), sizeof words)) {
    return false;
  }
  for (std::uint64_t word : words) {
    for (std::size_t index = 0; index < perWord; ++index) {
      *end++ = alphabet[word % letters];
      word /= letters;
    }
  }
  *end = '\0';
  return true;
}

constexpr bool isTaken(int status) noexcept {
  return status == npFioExists || status == npFioInUse;
}

}  // namespace

int fioSystem::createUnderRandomName(const char* directory, const char* prefix, char* path,
                                     int pathSize, File* file) noexcept {
  return makeUnderRandomName(create, directory, prefix, path, pathSize, file);
}

int fioSystem::makeUnderRandomName(Create* make, const char* directory, const char* prefix,
                                   char* path, int pathSize, File* file) noexcept {
  constexpr int attempts = 16;
  std::array<char, npFioPathSize> name;
  const std::size_t prefixLength = std::strlen(prefix);
  if (prefixLength + randomCharacters >= name.size()) {
    return npFioPathTooLong;
  }
  std::memcpy(name.data(), prefix, prefixLength);
  int status = npFioExists;
  for (int attempt = 0; attempt < attempts && isTaken(status); ++attempt) {
    if (!appendRandomName(name.data() + prefixLength)) {
      return npFioInputOutput;
    }
    status = np_fio_pcat(directory, name.data(), path, pathSize);
    if (status == npFioSuccess) {
      status = make(path, file);
    }
  }
  return status;
}

int np_fio_workCreate(const char* directory, np_fio_work* file) noexcept {
  *file = npFioNoWork;
  return directory == nullptr ? npFioBadArgument : fioSystem::createUnseen(directory, file);
}

int np_fio_workWrite(np_fio_work file, const void* bytes, std::size_t size,
                     std::int64_t offset) noexcept {
  const auto* next = static_cast<const unsigned char*>(bytes);
  while (size != 0) {
    std::size_t count = 0;
    const int status = fioSystem::write(file, next, size, offset, &count);
    if (status != npFioSuccess) {
      return status;
    }
    next += count;
    size -= count;
    offset += static_cast<std::int64_t>(count);
  }
  return npFioSuccess;
}

int np_fio_workRead(np_fio_work file, void* bytes, std::size_t size, std::int64_t offset) noexcept {
  auto* next = static_cast<unsigned char*>(bytes);
  while (size != 0) {
    std::size_t count = 0;
    const int status = fioSystem::read(file, next, size, offset, &count);
    if (status != npFioSuccess || count == 0) {
      return status != npFioSuccess ? status : npFioInputOutput;
    }
    next += count;
    size -= count;
    offset += static_cast<std::int64_t>(count);
  }
  return npFioSuccess;
}

void np_fio_workClose(np_fio_work file) noexcept {
  if (file != npFioNoWork) {
    (void)fioSystem::close(file);
  }
}
