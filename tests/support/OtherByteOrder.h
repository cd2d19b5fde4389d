/// Tables as machines of the other byte order write them.
#pragma once

#include <string>

#include "support/Bytes.h"
#include "support/TemporaryDirectory.h"

/// Turns around all numbers of a table that is sound and has this machine's byte order.
class OtherByteOrder {
 public:
  OtherByteOrder(const TemporaryDirectory& directory, const std::string& name)
      : directory_(directory), catalogue_(directory.file(name)) {}

  void reverse() {
    const auto columns = catalogue_.get<std::uint32_t>(8);
    const auto elements = catalogue_.get<std::uint32_t>(12);
    at_ = 32U + catalogue_.get<std::uint16_t>(6);
    reverseFields({{0, 2}, {2, 2}, {4, 2}, {6, 2}, {8, 4}, {12, 4}, {16, 8}, {24, 8}}, 0);
    for (std::uint32_t i = 0; i < columns; ++i) {
      const auto nameSize = catalogue_.get<std::uint32_t>(at_ + 4);
      reverseFields({{0, 2}, {2, 2}, {4, 4}, {8, 4}, {12, 4}}, at_);
      at_ += 16 + nameSize;
    }
    for (std::uint32_t i = 0; i < elements; ++i) {
      const auto dataSize = catalogue_.get<std::uint16_t>(at_ + 4);
      const auto indexSize = catalogue_.get<std::uint16_t>(at_ + 6);
      reverseData(catalogue_.content().substr(at_ + 16, dataSize - 1U));
      reverseIndex(catalogue_.content().substr(at_ + 16 + dataSize, indexSize - 1U));
      reverseFields({{0, 4}, {4, 2}, {6, 2}, {8, 8}}, at_);
      at_ += 16U + dataSize + indexSize;
    }
    catalogue_.save();
  }

 private:
  struct Field {
    std::size_t offset;
    std::size_t size;
  };

  void reverseFields(std::initializer_list<Field> fields, std::size_t begin) {
    for (const Field& field : fields) {
      catalogue_.reverse(begin + field.offset, field.size);
    }
  }

  void reverseIndex(const std::string& name) const {
    Bytes index(directory_.file(name));
    for (std::size_t entry = 0; entry < index.size(); entry += 8) {
      index.reverse(entry, 8);
    }
    index.save();
  }

  /// The tags tell what follows; lengths of texts have one byte order everywhere.
  void reverseData(const std::string& name) const {
    Bytes data(directory_.file(name));
    for (std::size_t at = 0; at < data.size();) {
      const auto tag = data.get<unsigned char>(at++);
      const int words = tag == 2 || tag == 3 ? 1 : tag == 4 ? 3 : 0;
      for (int i = 0; i < words; ++i, at += 8) {
        data.reverse(at, 8);
      }
      if (tag == 1) {
        ++at;
      } else if (tag == 5) {
        at += sizeOfText(data, at);
      }
    }
    data.save();
  }

  /// Of the length and the text that it tells.
  static std::size_t sizeOfText(const Bytes& data, std::size_t at) {
    const auto first = data.get<unsigned char>(at);
    if (first < 128) {
      return 1U + first;
    }
    std::size_t length = first & 0x7FU;
    for (std::size_t i = 1; i < 4; ++i) {
      length = length << 8U | data.get<unsigned char>(at + i);
    }
    return 4 + length;
  }

  const TemporaryDirectory& directory_;
  Bytes catalogue_;
  std::size_t at_ = 0;
};
