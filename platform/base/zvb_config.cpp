/// The ini file is read anew by every lookup that gets so far: lookups are rare, and so a program
/// sees the file as it is. Lines are `[SECTION]`, `NAME=value`, or comments that begin with `;` or
/// `#`; other lines say nothing. A value is the rest of its line without the blanks around it, so
/// it may itself contain `;`, which separates directories on some systems. Of several values of an
/// option the first counts.
#include "base/zvb_config.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "base/zvb_environment.h"
#include "base/zvb_scan.h"

namespace {

/// An ini file is read up to here; its options are few.
constexpr std::size_t largestIniFile = std::size_t{1024} * 1024;

ZvbString stringOf(std::string_view text) noexcept {
  ZvbString string;
  string.assign(text.data(), text.size());
  return string;
}

struct Halves {
  std::string_view left;
  std::string_view right;
  bool isSplit;
};

/// Splits at the first occurrence of `separator`; without one all is left of it.
Halves splitAt(std::string_view text, char separator) noexcept {
  const std::size_t place = text.find(separator);
  if (place == std::string_view::npos) {
    return {text, {}, false};
  }
  return {text.substr(0, place), text.substr(place + 1), true};
}

struct OptionName {
  ZvbString section;
  ZvbString name;

  [[nodiscard]] bool equals(std::string_view otherSection,
                            std::string_view otherName) const noexcept {
    return section.compare(stringOf(otherSection), false) == 0 &&
           name.compare(stringOf(otherName), false) == 0;
  }
};

/// A key without a section names an option before the first section.
OptionName parseKey(std::string_view key) noexcept {
  const Halves halves = splitAt(key, '/');
  return halves.isSplit ? OptionName{stringOf(halves.left), stringOf(halves.right)}
                        : OptionName{{}, stringOf(key)};
}

std::optional<std::string> findInIni(std::string_view ini, const OptionName& wanted) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (ini.substr(0, byteOrderMark.size()) == byteOrderMark) {
    ini.remove_prefix(byteOrderMark.size());
  }
  std::string_view section;
  while (!ini.empty()) {
    const Halves lines = splitAt(ini, '\n');
    ini = lines.right;
    const std::string_view line = zvbTrim(lines.left);
    if (line.empty() || line.front() == ';' || line.front() == '#') {
      continue;
    }
    if (line.front() == '[' && line.back() == ']') {
      section = zvbTrim(line.substr(1, line.size() - 2));
      continue;
    }
    const Halves option = splitAt(line, '=');
    if (option.isSplit && wanted.equals(section, zvbTrim(option.left))) {
      return std::string(zvbTrim(option.right));
    }
  }
  return std::nullopt;
}

std::optional<std::string> findInEnvironment(std::string_view key) {
  std::string name = "ZVB_";
  std::transform(key.begin(), key.end(), std::back_inserter(name), [](char character) {
    const bool isLower = character >= 'a' && character <= 'z';
    return character == '/' ? '_' : static_cast<char>(isLower ? character - 'a' + 'A' : character);
  });
  return zvbEnvironmentVariable(name);
}

std::string readFile(const std::string& path) {
  std::ifstream stream(std::filesystem::path(std::u8string(path.begin(), path.end())),
                       std::ios::binary);
  std::string text;
  std::array<char, 4096> block;
  do {
    stream.read(block.data(), block.size());
    text.append(block.data(), static_cast<std::size_t>(stream.gcount()));
  } while (stream && text.size() < largestIniFile);
  return text;
}

std::optional<std::string> findInIniFile(std::string_view key) {
  const std::optional<std::string> path = zvbEnvironmentVariable("ZVB_CONFIG");
  return path ? findInIni(readFile(*path), parseKey(key)) : std::nullopt;
}

class ConfigOptions final : public ZvbConfigOptions {
 public:
  [[nodiscard]] bool set(const ZvbString& key, const ZvbString& value) noexcept override {
    const std::lock_guard guard(mutex_);
    try {
      if (value.isNull()) {
        settings_.erase(std::string(key.asView()));
      } else {
        settings_.insert_or_assign(std::string(key.asView()), std::string(value.asView()));
      }
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  void clear() noexcept override {
    const std::lock_guard guard(mutex_);
    settings_.clear();
  }

  bool get(const ZvbString& key, ZvbString* value, int) noexcept override {
    try {
      const std::optional<std::string> found = find(key.asView());
      if (value == nullptr || !found) {
        return false;
      }
      value->assign(found->data(), found->size());
      return !value->memoryShort();
    } catch (const std::exception&) {  // memory is short or the path of the ini file is no path
      return false;
    }
  }

 private:
  std::optional<std::string> find(std::string_view key) {
    if (auto found = findInSettings(key)) {
      return found;
    }
    if (auto found = findInEnvironment(key)) {
      return found;
    }
    return findInIniFile(key);
  }

  std::optional<std::string> findInSettings(std::string_view key) {
    const std::lock_guard guard(mutex_);
    const auto found = settings_.find(key);
    return found != settings_.end() ? std::optional(found->second) : std::nullopt;
  }

  std::mutex mutex_;
  std::map<std::string, std::string, std::less<>> settings_;
};

}  // namespace

ZvbConfigOptions* zvbGetConfigOptions(const ZvbString&) noexcept {
  // Never destroyed: other objects may ask until the process has ended.
  alignas(ConfigOptions) static std::byte storage[sizeof(ConfigOptions)];
  static auto* const options = ::new (storage) ConfigOptions();
  return options;
}
