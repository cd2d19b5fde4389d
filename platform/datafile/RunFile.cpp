#include "datafile/RunFile.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "datafile/messages.h"
#include "fio/np_fio.h"

namespace {

constexpr std::size_t blockHead = 16;

constexpr std::uint64_t prime1 = 0x9E3779B185EBCA87;
constexpr std::uint64_t prime2 = 0xC2B2AE3D27D4EB4F;

std::uint64_t mix(std::uint64_t sum, std::uint64_t word) noexcept {
  return std::rotl(sum + word * prime2, 31) * prime1;
}

/// Meets every damaged bit; sums side by side keep the processor's multipliers busy.
std::uint64_t checksumOf(const unsigned char* bytes, std::size_t size) noexcept {
  constexpr std::size_t lanes = 8;
  constexpr std::size_t stride = lanes * sizeof(std::uint64_t);
  std::uint64_t sums[lanes] = {size, 1, 2, 3, 4, 5, 6, 7};
  std::size_t at = 0;
  for (; size - at >= stride; at += stride) {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      sums[lane] = mix(sums[lane], sortItem::get<std::uint64_t>(bytes + at + lane * 8));
    }
  }
  for (std::size_t lane = 0; at < size;
       ++lane, at += sizeof(std::uint64_t)) {  // less than a stride
    std::uint64_t word = 0;
    std::memcpy(&word, bytes + at, std::min(size - at, sizeof word));
    sums[lane] = mix(sums[lane], word);
  }
  std::uint64_t sum = prime1;
  for (const std::uint64_t part : sums) {
    sum = mix(sum, part);
  }
  return sum;
}

void putHead(unsigned char* block, std::size_t size, std::uint64_t checksum) noexcept {
  sortItem::put(block, std::uint64_t{size});
  sortItem::put(block + 8, checksum);
}

/// The bytes of a block of so many bytes of items, a multiple of the common size.
std::size_t wholeBlock(std::size_t itemBytes, std::size_t blockSize) noexcept {
  return (blockHead + itemBytes + blockSize - 1) / blockSize * blockSize;
}

}  // namespace

// ---- Writing

bool RunWriter::makeBuffer() noexcept {
  if (buffer_ == nullptr) {
    buffer_.reset(new (std::nothrow) unsigned char[bufferSize_ + sortItem::slack]());
    if (buffer_ == nullptr) {
      error_ = DATAFILE_MESSAGE(outOfMemory, "(sort write buffer)");
    }
  }
  return buffer_ != nullptr;
}

bool RunWriter::start(SpilledRun* run) noexcept {
  run_ = run;
  blockStart_ = 0;
  blockUsed_ = blockHead;
  return makeBuffer() && files_->make(&run->file, &error_);
}

bool RunWriter::append(const unsigned char* item, std::size_t size) noexcept {
  if (blockUsed_ + size > blockSize_) [[unlikely]] {
    if (!endBlock()) {
      return false;
    }
    if (blockHead + size > blockSize_) {
      return appendLarge(item, size);
    }
  }
  sortItem::copy(buffer_.get() + blockStart_ + blockUsed_, item, size);
  blockUsed_ += size;
  run_->largestItem = std::max(run_->largestItem, size);
  return true;
}

/// The item goes to the file from where it lies; what the last of its blocks lacks is filled up.
bool RunWriter::appendLarge(const unsigned char* item, std::size_t size) noexcept {
  if (!writeBuffer()) {
    return false;
  }
  unsigned char head[blockHead];
  putHead(head, size, checksums_ ? checksumOf(item, size) : 0);
  const std::size_t fill = wholeBlock(size, blockSize_) - blockHead - size;
  std::memset(buffer_.get(), 0, fill);
  run_->largestItem = std::max(run_->largestItem, size);
  ++monitor_->blocksSpilled;
  return files_->append(&run_->file, head, sizeof head, &error_) &&
         files_->append(&run_->file, item, size, &error_) &&
         files_->append(&run_->file, buffer_.get(), fill, &error_);
}

bool RunWriter::endBlock() noexcept {
  if (blockUsed_ == blockHead) {
    return true;
  }
  unsigned char* const block = buffer_.get() + blockStart_;
  const std::size_t size = blockUsed_ - blockHead;
  putHead(block, size, checksums_ ? checksumOf(block + blockHead, size) : 0);
  ++monitor_->blocksSpilled;
  blockStart_ += blockSize_;
  blockUsed_ = blockHead;
  return blockStart_ < bufferSize_ || writeBuffer();
}

bool RunWriter::writeBuffer() noexcept {
  const std::size_t size = blockStart_;
  blockStart_ = 0;
  return size == 0 || files_->append(&run_->file, buffer_.get(), size, &error_);
}

bool RunWriter::finish() noexcept { return endBlock() && writeBuffer(); }

// ---- Reading

bool RunReader::start(const SpilledRun& run, const SortSettings& settings, const SortPlan& plan,
                      ZvbString* error) noexcept {
  run_ = &run;
  checksums_ = settings.checksums;
  blockSize_ = plan.blockSize;
  offset_ = 0;
  item_ = end_ = nullptr;
  if (!growTo(blockSize_)) {
    *error = DATAFILE_MESSAGE(outOfMemory, "(sort read buffer)");
    return false;
  }
  return true;
}

const unsigned char* RunReader::next(ZvbString* error) noexcept {
  if (item_ == end_ && !loadBlock(error)) {
    return nullptr;
  }
  const unsigned char* item = item_;
  if (!sortItem::fits(item, static_cast<std::size_t>(end_ - item))) [[unlikely]] {
    *error = DATAFILE_MESSAGE(workFileDamaged);
    return nullptr;
  }
  item_ = sortItem::read(item).end();
  return item;
}

bool RunReader::loadBlock(ZvbString* error) noexcept {
  const std::int64_t left = run_->file.size() - offset_;
  if (left <= 0) {
    return false;
  }
  const int status = run_->file.read(buffer_.get(), blockSize_, offset_);
  if (status != npFioSuccess) {
    *error = DATAFILE_MESSAGE(workReadFailed, np_fio_errdesc(status));
    return false;
  }
  const auto size = static_cast<std::size_t>(sortItem::get<std::uint64_t>(buffer_.get()));
  const bool isPossible = size != 0 && size <= std::max(run_->largestItem, blockSize_ - blockHead);
  if (!isPossible || wholeBlock(size, blockSize_) > static_cast<std::uint64_t>(left)) {
    *error = DATAFILE_MESSAGE(workFileDamaged);
    return false;
  }
  if (blockHead + size > blockSize_ && !loadRest(blockSize_, blockHead + size, error)) {
    return false;
  }
  item_ = buffer_.get() + blockHead;
  end_ = item_ + size;
  if (checksums_ && checksumOf(item_, size) != sortItem::get<std::uint64_t>(buffer_.get() + 8)) {
    *error = DATAFILE_MESSAGE(workFileDamaged);
    return false;
  }
  offset_ += static_cast<std::int64_t>(wholeBlock(size, blockSize_));
  return true;
}

/// Loads the rest of a long block behind its first `loaded` bytes.
bool RunReader::loadRest(std::size_t loaded, std::size_t whole, ZvbString* error) noexcept {
  if (!growTo(whole)) {
    *error = DATAFILE_MESSAGE(outOfMemory, "(sort read buffer)");
    return false;
  }
  const int status = run_->file.read(buffer_.get() + loaded, whole - loaded,
                                     offset_ + static_cast<std::int64_t>(loaded));
  if (status != npFioSuccess) {
    *error = DATAFILE_MESSAGE(workReadFailed, np_fio_errdesc(status));
    return false;
  }
  return true;
}

/// Keeps what the buffer holds.
bool RunReader::growTo(std::size_t size) noexcept {
  if (size <= capacity_) {
    return true;
  }
  std::unique_ptr<unsigned char[]> grown(new (std::nothrow) unsigned char[size + sortItem::slack]);
  if (grown == nullptr) {
    return false;
  }
  if (buffer_ != nullptr) {
    std::memcpy(grown.get(), buffer_.get(), capacity_);
  }
  std::memset(grown.get() + size, 0, sortItem::slack);
  buffer_ = std::move(grown);
  capacity_ = size;
  return true;
}
