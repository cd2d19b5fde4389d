/// The values of a row, one after another: in place in the file's buffer as long as they lie there
/// whole, and through the file's operations otherwise.
///
/// Both keep their place in the buffer for themselves, so nothing else may use the file until
/// finish(); after a failure the file stands where the value that failed left it. They are made for
/// one row, on the stack, and all that is hot is inline, for the compiler to keep in registers.
#pragma once

#include "wtelem/ValueCodec.h"

class ValueWriter {
 public:
  /// Bytes written are counted in *offset.
  ValueWriter(np_fio_handle file, std::int64_t* offset) noexcept : file_(file), offset_(offset) {
    takeRoom();
  }

  valueCodec::Result write(ColumnDefinition* column, const ZvbDatavar& value) noexcept {
    unsigned char* next = valueCodec::encodeInPlace(column, value, next_, end_);
    if (next != nullptr) [[likely]] {
      next_ = next;
      return valueCodec::Result::done;
    }
    finish();
    const valueCodec::Result result = valueCodec::encodeValue(column, value, file_, offset_);
    takeRoom();
    return result;
  }

  void finish() noexcept {
    np_fio_commit(file_, static_cast<int>(next_ - begin_));
    *offset_ += next_ - begin_;
  }

 private:
  void takeRoom() noexcept {
    const np_fio_part<unsigned char> room = np_fio_writable(file_);
    begin_ = next_ = room.next;
    end_ = room.end;
  }

  np_fio_handle file_;
  std::int64_t* offset_;
  unsigned char* next_ = nullptr;
  const unsigned char* end_ = nullptr;
  const unsigned char* begin_ = nullptr;  // of the values that have yet to be counted
};

class ValueReader {
 public:
  /// Bytes read and passed over are counted in *offset.
  ValueReader(const valueCodec::Source& source, std::int64_t* offset) noexcept
      : source_(source), offset_(offset) {
    takeBytes();
  }

  valueCodec::Result read(ZvbDatavar* target) noexcept {
    const unsigned char* next =
        next_ < end_ ? valueCodec::decodeInPlace(source_, target, next_, end_) : nullptr;
    return moveTo(next, target);
  }

  /// Passes over `count` values.
  valueCodec::Result pass(int count) noexcept {
    auto result = valueCodec::Result::done;
    for (; count > 0 && result == valueCodec::Result::done; --count) {
      result = moveTo(next_ < end_ ? valueCodec::passInPlace(next_, end_) : nullptr, nullptr);
    }
    return result;
  }

  void finish() noexcept {
    np_fio_consume(source_.file, static_cast<int>(next_ - begin_));
    *offset_ += next_ - begin_;
  }

 private:
  valueCodec::Result moveTo(const unsigned char* next, ZvbDatavar* target) noexcept {
    if (next != nullptr) [[likely]] {
      next_ = next;
      return valueCodec::Result::done;
    }
    finish();
    const valueCodec::Result result = valueCodec::decodeValue(source_, target, offset_);
    takeBytes();
    return result;
  }

  void takeBytes() noexcept {
    const np_fio_part<const unsigned char> bytes = np_fio_readable(source_.file);
    begin_ = next_ = bytes.next;
    end_ = bytes.end;
  }

  valueCodec::Source source_;
  std::int64_t* offset_;
  const unsigned char* next_ = nullptr;
  const unsigned char* end_ = nullptr;
  const unsigned char* begin_ = nullptr;  // of the values that have yet to be counted
};
