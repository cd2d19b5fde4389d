/// Open files and their buffers, the same on every operating system.
///
/// A handle is in one of three states, told by the pointers of np_fio_file:
///
///   reading  begin <= cursor <= readEnd, writeEnd == begin: the buffer holds bytes of the file
///   writing  readEnd == begin, begin < cursor: [begin, cursor) waits to be written at beginOffset
///   between  cursor == begin == readEnd: nothing to hand out and nothing to write
///
/// What was read is kept when the position leaves it: [loadedOffset, loadedOffset + loadedSize) of
/// the file stays at `begin` until something else is loaded or written, so that a look at the end
/// of the file and back costs nothing. Where the position comes back in decides how much the next
/// load takes: a place far from the last one gets a small window, as rows read at random use little
/// of it; a place near it doubles the window up to the whole buffer. Behind the last place the load
/// begins at the position, before it three quarters of the window lie in front of the position, for
/// a reader that walks backwards.
#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "fio/FileSpace.h"
#include "fio/np_fio_system.h"

namespace {

/// Half as much costs one reader or writer a few per cent, twice as much gains nothing, and fifty
/// at once are slower the less their buffers fit the processor's cache.
constexpr std::size_t bufferSize = std::size_t{128} * 1024;
constexpr std::int64_t hintedBefore = std::int64_t{1024} * 1024;
constexpr std::size_t smallWindow = std::size_t{8} * 1024;
constexpr std::int64_t nearDistance = std::int64_t{64} * 1024;
constexpr std::size_t largestPeek = npFioPeekLimit;
/// So far below the limit of the type that the sum of a position and a size never overflows.
constexpr std::int64_t largestPosition = std::numeric_limits<std::int64_t>::max() / 2;

struct OpenFile : np_fio_file {
  OpenFile() noexcept : np_fio_file{} {}

  fioSystem::File system = 0;
  std::unique_ptr<unsigned char[]> buffer;  // made at first use, `begin` points to it
  std::int64_t loadedOffset = 0;
  std::size_t loadedSize = 0;
  std::size_t window = smallWindow;           // bytes that the last load was meant to take
  std::size_t largestNeed = 0;                // bytes that were ever needed at once, to largestPeek
  int status = npFioSuccess;                  // of the last failure
  std::int64_t hintedFrom = largestPosition;  // of the bytes that the system was told will be read
  FileSpace space;                            // for what is written
  bool isWritable = false;
  bool flushFailed = false;  // the bytes in the buffer were refused; it takes no more until a retry
};

OpenFile& openFile(np_fio_handle file) noexcept { return static_cast<OpenFile&>(*file); }

std::size_t distance(const unsigned char* from, const unsigned char* to) noexcept {
  return static_cast<std::size_t>(to - from);
}

std::size_t readable(const OpenFile& file) noexcept {
  return file.readEnd > file.cursor ? distance(file.cursor, file.readEnd) : 0;
}

std::size_t unwritten(const OpenFile& file) noexcept {
  return file.readEnd == file.begin ? distance(file.begin, file.cursor) : 0;
}

std::int64_t position(const OpenFile& file) noexcept {
  return file.beginOffset + (file.cursor - file.begin);
}

std::int64_t loadedEnd(const OpenFile& file) noexcept {
  return file.loadedOffset + static_cast<std::int64_t>(file.loadedSize);
}

bool fail(OpenFile& file, int status) noexcept {
  file.status = status;
  return false;
}

bool ensureBuffer(OpenFile& file) noexcept {
  if (file.buffer != nullptr) {
    return true;
  }
  file.buffer.reset(new (std::nothrow) unsigned char[bufferSize + npFioSlack]);
  if (file.buffer == nullptr) {
    return fail(file, npFioNoMemory);
  }
  if (file.status == npFioNoMemory) {  // what an earlier failure said no longer holds
    file.status = npFioSuccess;
  }
  file.begin = file.cursor = file.readEnd = file.writeEnd = file.buffer.get();
  return true;
}

/// Between reading and writing at `offset`; nothing may be unwritten.
void standAt(OpenFile& file, std::int64_t offset) noexcept {
  file.cursor = file.readEnd = file.writeEnd = file.begin;
  file.beginOffset = offset;
}

/// Reading at `offset`, which the loaded bytes hold or end at.
void readLoadedAt(OpenFile& file, std::int64_t offset) noexcept {
  file.beginOffset = file.loadedOffset;
  file.cursor = file.begin + (offset - file.loadedOffset);
  file.readEnd = file.begin + file.loadedSize;
  file.writeEnd = file.begin;
}

/// Writes at `offset` until all is written or the system refuses; the number of bytes written.
std::size_t writeAll(OpenFile& file, const unsigned char* bytes, std::size_t size,
                     std::int64_t offset, int* status) noexcept {
  std::size_t done = 0;
  *status = npFioSuccess;
  while (done < size && *status == npFioSuccess) {
    std::size_t count = 0;
    *status = fioSystem::write(file.system, bytes + done, size - done,
                               offset + static_cast<std::int64_t>(done), &count);
    done += count;
  }
  return done;
}

/// The room of the buffer ends where the space that is assured on the disk does.
void offerRoom(OpenFile& file) noexcept {
  const std::int64_t assured = file.space.endFrom(file.beginOffset) - file.beginOffset;
  const auto size = static_cast<std::size_t>(
      std::clamp<std::int64_t>(assured, 0, static_cast<std::int64_t>(bufferSize)));
  file.writeEnd = std::max(file.begin + size, file.cursor);
}

/// What the system refuses stays at the front of the buffer, which then has no room for more.
bool flush(OpenFile& file) noexcept {
  const std::size_t size = unwritten(file);
  if (size == 0) {
    return true;
  }
  file.space.reserveAhead(file.system, file.beginOffset, static_cast<std::int64_t>(size));
  const std::size_t done = writeAll(file, file.begin, size, file.beginOffset, &file.status);
  file.flushFailed = done < size;
  std::memmove(file.begin, file.begin + done, size - done);
  file.beginOffset += static_cast<std::int64_t>(done);
  file.cursor = file.begin + (size - done);
  if (file.flushFailed) {
    file.writeEnd = file.cursor;
  } else {
    offerRoom(file);
  }
  return !file.flushFailed;
}

/// Gives the buffer, which is being written and has not failed, room for `size` bytes, which has to
/// be at most bufferSize. False when they cannot be written, now or later.
bool makeRoom(OpenFile& file, std::size_t size) noexcept {
  if (unwritten(file) + size > bufferSize && !flush(file)) {
    return false;
  }
  const auto held = static_cast<std::int64_t>(unwritten(file) + size);
  const int status = file.space.assure(file.system, file.beginOffset, held);
  offerRoom(file);
  return status == npFioSuccess || fail(file, status);
}

bool beginWriting(OpenFile& file) noexcept {
  if (!file.isWritable) {
    return fail(file, npFioBadArgument);
  }
  if (!ensureBuffer(file)) {
    return false;
  }
  if (unwritten(file) != 0) {
    return !file.flushFailed || flush(file);
  }
  standAt(file, position(file));
  file.loadedSize = 0;
  offerRoom(file);
  return true;
}

/// Reads at `offset` until `needed` bytes are there, the file ends or the system fails; takes up to
/// `wanted` where the system gives them at once. The number of bytes read.
std::size_t readSome(OpenFile& file, unsigned char* bytes, std::size_t needed, std::size_t wanted,
                     std::int64_t offset) noexcept {
  std::size_t done = 0;
  while (done < needed) {
    std::size_t count = 0;
    const int status = fioSystem::read(file.system, bytes + done, wanted - done,
                                       offset + static_cast<std::int64_t>(done), &count);
    if (status != npFioSuccess) {
      file.status = status;
    }
    if (count == 0) {
      break;
    }
    done += count;
  }
  return done;
}

bool isNearLoaded(const OpenFile& file, std::int64_t offset) noexcept {
  return file.loadedSize != 0 && offset >= file.loadedOffset - nearDistance &&
         offset <= loadedEnd(file) + nearDistance;
}

/// How many bytes in front of `offset` the next load takes along: none but for a reader that walks
/// backwards. The load then begins at a page, and leaves as much room behind `offset` as the reader
/// has ever needed at once, so that a long text does not take a load of its own.
std::size_t bytesBefore(const OpenFile& file, std::int64_t offset) noexcept {
  constexpr std::int64_t pageSize = 4096;
  if (!isNearLoaded(file, offset) || offset >= file.loadedOffset) {
    return 0;
  }
  const auto before =
      static_cast<std::int64_t>(std::min(file.window / 4 * 3, bufferSize - file.largestNeed));
  const std::int64_t start =
      offset > before ? (offset - before + pageSize - 1) / pageSize * pageSize : 0;
  return static_cast<std::size_t>(offset - start);
}

/// The system reads ahead of who walks forwards by itself; who walks backwards has to say so.
/// One hint serves until half of what it named has been read.
void hintBefore(OpenFile& file, std::int64_t offset) noexcept {
  const std::int64_t left = offset - file.hintedFrom;
  const bool isEnough = left >= hintedBefore / 2 || file.hintedFrom == 0;
  if (offset == 0 || (left >= 0 && left <= hintedBefore && isEnough)) {
    return;
  }
  file.hintedFrom = std::max(offset - hintedBefore, std::int64_t{0});
  fioSystem::willRead(file.system, file.hintedFrom, offset - file.hintedFrom);
}

/// Loads bytes until `needed` of them, at most bufferSize, are readable, or as many as there are.
/// The position stays, and so do the bytes that are readable already.
void load(OpenFile& file, std::size_t needed) noexcept {
  if (!ensureBuffer(file)) {
    return;
  }
  const std::int64_t offset = position(file);
  const std::size_t kept = readable(file);
  file.window = isNearLoaded(file, offset) ? std::min(file.window * 2, bufferSize) : smallWindow;
  file.largestNeed = std::max(file.largestNeed, std::min(needed, largestPeek));
  const bool mayStartBefore = kept == 0 && needed <= largestPeek;
  const std::size_t before = mayStartBefore ? bytesBefore(file, offset) : 0;
  const std::int64_t start = offset - static_cast<std::int64_t>(before);
  if (before != 0 && file.window == bufferSize) {
    hintBefore(file, start);
  }
  std::memmove(file.begin, file.cursor, kept);
  const std::size_t required = before + needed;
  const std::size_t wanted = std::min(std::max(required, kept + file.window), bufferSize);
  const std::size_t size = kept + readSome(file, file.begin + kept, required - kept, wanted - kept,
                                           start + static_cast<std::int64_t>(kept));
  if (size != 0) {
    file.loadedOffset = start;
    file.loadedSize = size;
    std::memset(file.begin + size, 0, npFioSlack);
  }
  if (size > before) {
    readLoadedAt(file, offset);
  } else {
    standAt(file, offset);
  }
}

std::size_t takeReadable(OpenFile& file, unsigned char* target, std::size_t limit) noexcept {
  const std::size_t size = std::min(readable(file), limit);
  if (size != 0) {
    std::memcpy(target, file.cursor, size);
    file.cursor += size;
  }
  return size;
}

std::size_t readPastBuffer(OpenFile& file, unsigned char* target, std::size_t size) noexcept {
  const std::int64_t offset = position(file);
  const std::size_t done = readSome(file, target, size, size, offset);
  standAt(file, offset + static_cast<std::int64_t>(done));
  return done;
}

/// The buffer has to be empty.
std::size_t writePastBuffer(OpenFile& file, const unsigned char* bytes, std::size_t size) noexcept {
  int status = npFioSuccess;
  const std::size_t done = writeAll(file, bytes, size, file.beginOffset, &status);
  file.beginOffset += static_cast<std::int64_t>(done);
  offerRoom(file);
  if (done < size) {
    file.status = status;
  }
  return done;
}

/// Fills the room that the buffer has.
std::size_t putIntoRoom(OpenFile& file, const unsigned char* bytes, std::size_t size) noexcept {
  const std::size_t count = std::min(distance(file.cursor, file.writeEnd), size);
  std::memcpy(file.cursor, bytes, count);
  file.cursor += count;
  return count;
}

/// What a failure leaves in the buffer has been accepted and counts as put.
std::size_t put(OpenFile& file, const unsigned char* bytes, std::size_t size) noexcept {
  std::size_t done = 0;
  while (unwritten(file) != 0 || size - done < bufferSize) {
    done += putIntoRoom(file, bytes + done, size - done);
    if (done == size) {
      return done;
    }
    const std::size_t left = bufferSize - unwritten(file);
    if (left == 0 ? !flush(file) : !makeRoom(file, std::min(left, size - done))) {
      return done;
    }
  }
  return done + writePastBuffer(file, bytes + done, size - done);
}

/// The end of the file as it is when all that is unwritten has been written.
int endOffset(const OpenFile& file, std::int64_t* end) noexcept {
  const int status = fioSystem::size(file.system, end);
  if (status == npFioSuccess && unwritten(file) != 0) {
    *end = std::max(*end, position(file));
  }
  return status;
}

int whenceOffset(const OpenFile& file, int whence, std::int64_t* offset) noexcept {
  switch (whence) {
    case npFioFromStart:
      *offset = 0;
      return npFioSuccess;
    case npFioFromHere:
      *offset = position(file);
      return npFioSuccess;
    case npFioFromEnd:
      return endOffset(file, offset);
    default:
      return npFioBadArgument;
  }
}

bool moveTo(OpenFile& file, std::int64_t offset) noexcept {
  if (offset == position(file)) {
    return true;
  }
  if (!flush(file)) {
    return false;
  }
  if (file.loadedSize != 0 && offset >= file.loadedOffset && offset <= loadedEnd(file)) {
    readLoadedAt(file, offset);
  } else {
    standAt(file, offset);
  }
  return true;
}

/// Forgets the unwritten bytes at and behind `offset` of the file.
void dropUnwritten(OpenFile& file, std::int64_t offset) noexcept {
  const auto size = static_cast<std::int64_t>(unwritten(file));
  const std::int64_t kept = std::clamp<std::int64_t>(offset - file.beginOffset, 0, size);
  if (size == 0 || kept == size) {
    return;
  }
  file.cursor = file.begin + kept;
  if (file.flushFailed) {
    file.writeEnd = file.cursor;
  }
  if (kept == 0) {
    file.flushFailed = false;
    standAt(file, file.beginOffset);
  }
}

int cutFile(OpenFile& file, std::int64_t size) noexcept {
  const int status = fioSystem::truncate(file.system, size);
  file.space.cutAt(size);
  return status;
}

using NewFile = std::unique_ptr<OpenFile>;

void handOver(NewFile made, int mode, np_fio_handle* file) noexcept {
  made->isWritable = mode != npFioRead;
  if (mode == npFioOnlyWriter) {
    made->space.allowReserving();
  }
  *file = made.release();
}

}  // namespace

int np_fio_tmpfile(const char* directory, const char* prefix, char* path, int pathSize,
                   np_fio_handle* file) noexcept {
  if (file == nullptr) {
    return npFioBadArgument;
  }
  *file = nullptr;
  if (directory == nullptr || prefix == nullptr || path == nullptr) {
    return npFioBadArgument;
  }
  NewFile made(new (std::nothrow) OpenFile);
  if (made == nullptr) {
    return npFioNoMemory;
  }
  const int status =
      fioSystem::createUnderRandomName(directory, prefix, path, pathSize, &made->system);
  if (status == npFioSuccess) {
    handOver(std::move(made), npFioOnlyWriter, file);
  }
  return status;
}

int np_fio_open(const char* path, int mode, np_fio_handle* file) noexcept {
  if (file == nullptr) {
    return npFioBadArgument;
  }
  *file = nullptr;
  if (path == nullptr || mode < npFioRead || mode > npFioOnlyWriter) {
    return npFioBadArgument;
  }
  NewFile made(new (std::nothrow) OpenFile);
  if (made == nullptr) {
    return npFioNoMemory;
  }
  const int status = fioSystem::open(path, static_cast<NpFioMode>(mode), &made->system);
  if (status == npFioSuccess) {
    handOver(std::move(made), mode, file);
  }
  return status;
}

int np_fio_close(np_fio_handle file) noexcept {
  if (file == nullptr) {
    return npFioBadArgument;
  }
  const NewFile closing(&openFile(file));
  const int flushStatus = flush(*closing) ? npFioSuccess : closing->status;
  closing->space.giveBack(closing->system);
  const int closeStatus = fioSystem::close(closing->system);
  return flushStatus != npFioSuccess ? flushStatus : closeStatus;
}

int np_fio_bufmode(np_fio_handle file, int mode) noexcept {
  if (file == nullptr || mode != 0) {
    return npFioBadArgument;
  }
  OpenFile& open = openFile(file);
  if (flush(open)) {
    open.status = npFioSuccess;
  }
  return open.status;
}

int np_fio_trunc(np_fio_handle file) noexcept {
  if (file == nullptr) {
    return npFioBadArgument;
  }
  OpenFile& open = openFile(file);
  if (!flush(open)) {
    return open.status;
  }
  const std::int64_t end = position(open);
  standAt(open, end);
  open.loadedSize = 0;
  const int status = cutFile(open, end);
  if (status != npFioSuccess) {
    open.status = status;
  }
  return status;
}

int np_fio_cut(np_fio_handle file, std::int64_t size) noexcept {
  if (file == nullptr || size < 0 || size > largestPosition) {
    return npFioBadArgument;
  }
  OpenFile& open = openFile(file);
  dropUnwritten(open, size);
  if (!moveTo(open, size)) {
    return open.status;
  }
  open.loadedSize = 0;
  if (unwritten(open) == 0) {
    standAt(open, size);
  }
  std::int64_t fileSize = 0;
  int status = fioSystem::size(open.system, &fileSize);
  if (status == npFioSuccess && fileSize > size) {
    status = cutFile(open, size);
  }
  return status;
}

void np_fio_writeAlone(np_fio_handle file) noexcept {
  if (file != nullptr) {
    openFile(file).space.allowReserving();
  }
}

int np_fio_assure(np_fio_handle file, std::int64_t size) noexcept {
  if (file == nullptr || size < 0 || size > largestPosition) {
    return npFioBadArgument;
  }
  OpenFile& open = openFile(file);
  return open.space.assure(open.system, 0, size);
}

int np_fio_stat64(const char* path, np_fio_stat* info) noexcept {
  return path != nullptr && info != nullptr ? fioSystem::stat(path, info) : npFioBadArgument;
}

int np_fio_madeTime(const char* path, std::int64_t* time) noexcept {
  return path != nullptr && time != nullptr ? fioSystem::madeTime(path, time) : npFioBadArgument;
}

int np_fio_list(const char* directory, np_fio_nameTaker taker, void* context) noexcept {
  return directory != nullptr && taker != nullptr ? fioSystem::list(directory, taker, context)
                                                  : npFioBadArgument;
}

int np_fio_unlink(const char* path) noexcept {
  return path != nullptr ? fioSystem::remove(path) : npFioBadArgument;
}

int np_fio_status(np_fio_handle file) noexcept {
  return file != nullptr ? openFile(file).status : npFioBadArgument;
}

int np_fio_getbSlow(np_fio_handle file, void* buffer, int count) noexcept {
  if (file == nullptr || buffer == nullptr || count <= 0) {
    return 0;
  }
  OpenFile& open = openFile(file);
  if (!flush(open)) {
    return 0;
  }
  auto* const target = static_cast<unsigned char*>(buffer);
  const auto size = static_cast<std::size_t>(count);
  std::size_t done = takeReadable(open, target, size);
  if (size - done >= bufferSize) {
    done += readPastBuffer(open, target + done, size - done);
  } else if (done < size) {
    load(open, size - done);
    done += takeReadable(open, target + done, size - done);
  }
  return static_cast<int>(done);
}

int np_fio_putbSlow(np_fio_handle file, const void* buffer, int count) noexcept {
  if (file == nullptr || buffer == nullptr || count <= 0) {
    return 0;
  }
  OpenFile& open = openFile(file);
  if (!beginWriting(open)) {
    return 0;
  }
  return static_cast<int>(
      put(open, static_cast<const unsigned char*>(buffer), static_cast<std::size_t>(count)));
}

std::int64_t np_fio_seekSlow(np_fio_handle file, std::int64_t offset, int whence) noexcept {
  constexpr std::int64_t failure = -1;
  if (file == nullptr) {
    return failure;
  }
  OpenFile& open = openFile(file);
  if (open.flushFailed && !flush(open)) {
    return failure;
  }
  std::int64_t from = 0;
  int status = whenceOffset(open, whence, &from);
  if (status == npFioSuccess && (offset < -from || offset > largestPosition - from)) {
    status = npFioBadArgument;
  }
  if (status != npFioSuccess) {
    open.status = status;
    return failure;
  }
  return moveTo(open, from + offset) ? from + offset : failure;
}

const unsigned char* np_fio_peekSlow(np_fio_handle file, int count) noexcept {
  if (file == nullptr || count <= 0 || count > npFioPeekLimit) {
    return nullptr;
  }
  OpenFile& open = openFile(file);
  if (!flush(open)) {
    return nullptr;
  }
  const auto size = static_cast<std::size_t>(count);
  load(open, size);
  return readable(open) >= size ? open.cursor : nullptr;
}

unsigned char* np_fio_reserveSlow(np_fio_handle file, int count) noexcept {
  if (file == nullptr || count <= 0 || count > npFioPeekLimit) {
    return nullptr;
  }
  OpenFile& open = openFile(file);
  if (!beginWriting(open)) {
    return nullptr;
  }
  const auto size = static_cast<std::size_t>(count);
  const bool hasRoom = distance(open.cursor, open.writeEnd) >= size;
  return hasRoom || makeRoom(open, size) ? open.cursor : nullptr;
}
