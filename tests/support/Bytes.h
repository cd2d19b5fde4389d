/// Files as bytes, for tests that look at them or damage them.
#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

/// Numbers one behind another, as this machine keeps them.
template <typename... Numbers>
std::string inMemory(Numbers... numbers) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&numbers), sizeof numbers), ...);
  return bytes;
}

class Bytes {
 public:
  explicit Bytes(std::string path) : path_(std::move(path)) {
    std::ifstream stream(path_, std::ios::binary);
    content_.assign(std::istreambuf_iterator<char>(stream), {});
  }

  [[nodiscard]] const std::string& content() const { return content_; }
  [[nodiscard]] std::size_t size() const { return content_.size(); }

  template <typename Number>
  [[nodiscard]] Number get(std::size_t offset) const {
    Number number;
    std::memcpy(&number, content_.data() + offset, sizeof number);
    return number;
  }
  template <typename Number>
  Bytes& set(std::size_t offset, Number number) {
    std::memcpy(content_.data() + offset, &number, sizeof number);
    return *this;
  }
  Bytes& insert(std::size_t offset, const std::string& bytes) {
    content_.insert(offset, bytes);
    return *this;
  }
  /// Puts what stands in one place into another one as well.
  Bytes& repeat(std::size_t from, std::size_t size, std::size_t to) {
    content_.replace(to, size, content_.substr(from, size));
    return *this;
  }
  Bytes& cut(std::size_t size) {
    content_.resize(size);
    return *this;
  }
  Bytes& reverse(std::size_t offset, std::size_t size) {
    std::string field = content_.substr(offset, size);
    content_.replace(offset, size, std::string(field.rbegin(), field.rend()));
    return *this;
  }
  void save() const { std::ofstream(path_, std::ios::binary) << content_; }

 private:
  std::string path_;
  std::string content_;
};
