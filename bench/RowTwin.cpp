#include "RowTwin.h"

#include <bit>
#include <cstring>
#include <memory>

#include "System.h"

namespace {

constexpr std::size_t bufferSize = 0x40000;
constexpr std::size_t largestRow = 128;

/// A buffer that goes to a file when it is full.
class Sink {
 public:
  explicit Sink(const std::string& path)
      : file_(path, RawFile::Use::writeNew),
        buffer_(std::make_unique<unsigned char[]>(bufferSize)) {}

  void makeRoom(std::size_t size) {
    if (bufferSize - used_ < size) {
      flush();
    }
  }
  void tag(unsigned char byte) { buffer_[used_++] = byte; }
  void put(const void* bytes, std::size_t size) {
    std::memcpy(buffer_.get() + used_, bytes, size);
    used_ += size;
  }
  void flush() {
    good_ = good_ && file_.write(buffer_.get(), used_);
    written_ += used_;
    used_ = 0;
  }
  [[nodiscard]] std::size_t size() const { return written_ + used_; }
  [[nodiscard]] bool good() const { return good_; }

 private:
  RawFile file_;
  std::unique_ptr<unsigned char[]> buffer_;
  std::size_t used_ = 0;
  std::size_t written_ = 0;
  bool good_ = true;
};

void putText(Sink& sink, const char* text) {
  const std::size_t length = std::strlen(text) + 1;
  sink.tag(5);
  sink.tag(static_cast<unsigned char>(length));
  sink.put(text, length);
}

void putRow(Sink& sink, const SampleRow& row) {
  sink.tag(3);
  sink.put(&row.id, 8);
  sink.tag(3);
  sink.put(&row.amount, 8);
  sink.tag(4);
  sink.put(row.price, 24);
  putText(sink, row.code);
  putText(sink, row.name);
  sink.tag(2);
  sink.put(&row.day, 8);
  sink.tag(1);
  sink.tag(row.flag ? 1 : 0);
}

/// A buffer filled from a file; there are always largestRow bytes in it unless the file ends.
class SourceFile {
 public:
  explicit SourceFile(const std::string& path)
      : file_(path, RawFile::Use::read), buffer_(std::make_unique<unsigned char[]>(bufferSize)) {}

  /// Moves to a row; null at the end.
  const unsigned char* row() {
    if (end_ - position_ < largestRow) {
      std::memmove(buffer_.get(), buffer_.get() + position_, end_ - position_);
      end_ -= position_;
      position_ = 0;
      end_ += file_.read(buffer_.get() + end_, bufferSize - end_);
    }
    return position_ == end_ ? nullptr : buffer_.get() + position_;
  }
  void moveOn(std::size_t size) { position_ += size; }

 private:
  RawFile file_;
  std::unique_ptr<unsigned char[]> buffer_;
  std::size_t position_ = 0;
  std::size_t end_ = 0;
};

const unsigned char* readText(const unsigned char* bytes, char* text, std::size_t* size) {
  const std::size_t length = bytes[1];
  std::memcpy(text, bytes + 2, length);
  *size = length - 1;
  return bytes + 2 + length;
}

const unsigned char* readRow(const unsigned char* bytes, SampleRow* row, std::size_t* codeSize,
                             std::size_t* nameSize) {
  std::memcpy(&row->id, bytes + 1, 8);
  std::memcpy(&row->amount, bytes + 10, 8);
  std::memcpy(row->price, bytes + 19, 24);
  bytes = readText(bytes + 43, row->code, codeSize);
  bytes = readText(bytes, row->name, nameSize);
  std::memcpy(&row->day, bytes + 1, 8);
  row->flag = bytes[10] != 0;
  return bytes + 11;
}

}  // namespace

std::int64_t writeByHand(const std::vector<SampleRow>& rows, const std::string& dataPath,
                         const std::string& indexPath) {
  Sink data(dataPath);
  Sink index(indexPath);
  for (const SampleRow& row : rows) {
    const std::size_t offset = data.size();
    index.makeRoom(8);
    index.put(&offset, 8);
    data.makeRoom(largestRow);
    putRow(data, row);
  }
  data.flush();
  index.flush();
  return data.good() && index.good() ? static_cast<std::int64_t>(data.size()) : -1;
}

std::uint64_t readByHand(const std::string& dataPath) {
  SourceFile source(dataPath);
  RowChecksum checksum;
  SampleRow row{};
  while (const unsigned char* bytes = source.row()) {
    std::size_t codeSize = 0;
    std::size_t nameSize = 0;
    const unsigned char* end = readRow(bytes, &row, &codeSize, &nameSize);
    source.moveOn(static_cast<std::size_t>(end - bytes));
    checksum.add(static_cast<std::uint64_t>(row.id));
    checksum.add(static_cast<std::uint64_t>(row.amount));
    checksum.add(row.price[1]);
    checksum.addText(row.code, codeSize);
    checksum.addText(row.name, nameSize);
    checksum.add(std::bit_cast<std::uint64_t>(row.day));
    checksum.add(row.flag ? 1 : 0);
  }
  return checksum.value();
}
