#include "fio/TempDirectories.h"

#include <new>
#include <string_view>

namespace {

/// Takes the text before the next separator off the front of `list`.
std::string_view takeEntry(std::string_view* list, char separator) noexcept {
  const std::size_t end = list->find(separator);
  const std::string_view entry = list->substr(0, end);
  list->remove_prefix(end == std::string_view::npos ? list->size() : end + 1);
  return entry;
}

}  // namespace

bool TempDirectories::split(const ZvbString& list, char separator) noexcept {
  int count = 0;
  for (std::string_view rest = list.asView(); !rest.empty(); ++count) {
    (void)takeEntry(&rest, separator);
  }
  directories_.reset(new (std::nothrow) ZvbString[static_cast<std::size_t>(count)]);
  if (directories_ == nullptr) {
    return false;
  }
  count_ = count;
  std::string_view rest = list.asView();
  for (int i = 0; i < count; ++i) {
    const std::string_view entry = takeEntry(&rest, separator);
    directories_[static_cast<std::size_t>(i)].assign(entry.data(), entry.size());
    if (directories_[static_cast<std::size_t>(i)].memoryShort()) {
      return false;
    }
  }
  return true;
}

ZvbString TempDirectories::get(int index) const noexcept { return path(index); }

const char* TempDirectories::path(int index) const noexcept {
  return index < 0 || index >= count_ ? "" : directories_[static_cast<std::size_t>(index)].asCstr();
}
