/// The names that the files of elements have so far, each kept as its random characters.
///
/// They are kept in sorted runs whose sizes are the powers of two that make up their number: a new
/// name is merged with the runs that it completes. No choice of names makes that slow. Thread rule:
/// used by the thread that makes the check.
#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "wtelem/FileNames.h"

class SeenNames {
 public:
  static constexpr std::size_t nameSize = fileNames::randomCharacters;
  using Name = std::array<char, nameSize>;

  [[nodiscard]] bool contains(const Name& name) const noexcept;
  /// False when memory is short.
  [[nodiscard]] bool add(const Name& name) noexcept;

 private:
  [[nodiscard]] bool makeRoom() noexcept;

  std::unique_ptr<Name[]> names_;
  std::size_t count_ = 0;
  std::size_t capacity_ = 0;
};
