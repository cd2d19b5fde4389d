#include "wtclean/ElementNames.h"

#include <string_view>

#include "wtelem/CatalogueFormat.h"
#include "wtelem/FileFields.h"
#include "wtelem/FileNames.h"

namespace {

constexpr int longestName = fileNames::sizeOf(fileNames::indexPrefix);

class Reader {
 public:
  Reader(np_fio_handle file, std::int64_t size, ElementNameTaker taker, void* context) noexcept
      : file_(file), size_(size), taker_(taker), context_(context) {}

  [[nodiscard]] CatalogueKind read() noexcept {
    unsigned char bytes[fixedHeaderSize];
    if (size_ == 0) {
      return CatalogueKind::unfinished;
    }
    if (!get(bytes, fixedHeaderSize)) {
      return CatalogueKind::damaged;
    }
    if (isUnwritten(bytes)) {
      return CatalogueKind::unfinished;
    }
    return readRecords(bytes) ? CatalogueKind::whole : CatalogueKind::damaged;
  }

 private:
  bool readRecords(const unsigned char* header) noexcept {
    swap_ = loadField<std::uint16_t>(header, false) != byteOrderMark;
    const auto version = loadField<std::int16_t>(header + 2, swap_);
    const std::int64_t surplus =
        std::int64_t{loadField<std::uint16_t>(header + 4, swap_)} - fixedHeaderSize;
    const std::int64_t keyLength = loadField<std::uint16_t>(header + 6, swap_);
    if (version / 100 > highestMajorVersion || !pass(surplus) || !pass(keyLength)) {
      return false;
    }
    auto columns = loadField<std::uint32_t>(header + 8, swap_);
    auto elements = loadField<std::uint32_t>(header + 12, swap_);
    while (columns > 0 && readColumn()) {
      --columns;
    }
    while (columns == 0 && elements > 0 && readElement()) {
      --elements;
    }
    return columns == 0 && elements == 0 && isAtEnd();
  }

  /// Behind the records of a long catalogue there may be those of a killed append.
  bool isAtEnd() noexcept {
    return !isWrittenAtOnce(size_) || np_fio_seek64(file_, 0, npFioFromHere) == size_;
  }

  bool readColumn() noexcept {
    unsigned char head[recordHeadSize];
    return get(head, recordHeadSize) &&
           pass(std::int64_t{loadField<std::uint16_t>(head, swap_)} - recordHeadSize) &&
           pass(loadField<std::uint32_t>(head + 4, swap_));
  }

  bool readElement() noexcept {
    unsigned char head[recordHeadSize];
    return get(head, recordHeadSize) &&
           pass(std::int64_t{loadField<std::uint32_t>(head, swap_)} - recordHeadSize) &&
           readName(fileNames::dataPrefix, loadField<std::uint16_t>(head + 4, swap_)) &&
           readIndexName(loadField<std::uint16_t>(head + 6, swap_));
  }

  bool readIndexName(int length) noexcept {
    return length == 0 || readName(fileNames::indexPrefix, length);
  }

  /// A name that this library does not give is damage: it may stand for one that it has given.
  bool readName(const char* prefix, int length) noexcept {
    char name[longestName];
    if (length != fileNames::sizeOf(prefix) || !get(name, length)) {
      return false;
    }
    const std::string_view text(name, static_cast<std::size_t>(length) - 1);
    if (name[length - 1] != '\0' || !fileNames::isOf(prefix, text)) {
      return false;
    }
    if (taker_ != nullptr) {
      taker_(name, context_);
    }
    return true;
  }

  bool get(void* bytes, int count) noexcept {
    return count == 0 || np_fio_getb(file_, bytes, count) == count;
  }

  /// Goes on by a number of bytes, which the file must have.
  bool pass(std::int64_t count) noexcept {
    const std::int64_t position = np_fio_seek64(file_, 0, npFioFromHere);
    return position >= 0 && count >= 0 && count <= size_ - position &&
           (count == 0 || np_fio_seek64(file_, count, npFioFromHere) == position + count);
  }

  np_fio_handle file_;
  std::int64_t size_;
  ElementNameTaker taker_;
  void* context_;
  bool swap_ = false;  // the table is of the other byte order
};

}  // namespace

CatalogueKind readElementNames(np_fio_handle catalogue, ElementNameTaker taker,
                               void* context) noexcept {
  const std::int64_t size = np_fio_seek64(catalogue, 0, npFioFromEnd);
  if (size < 0 || np_fio_seek64(catalogue, 0, npFioFromStart) != 0) {
    return CatalogueKind::damaged;
  }
  return Reader(catalogue, size, taker, context).read();
}
