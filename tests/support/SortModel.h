/// What sorting has to give, told in the plainest way: keys as the library's conversions make them,
/// a comparison without any cleverness, std::stable_sort. And the values that make it hard.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <compare>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include "support/TableFixture.h"

struct KeySetting {
  std::uint32_t column;
  bool descending = false;
  std::uint64_t value = 0;  // 1: ignore case, 2: nulls last, 3: both
};
using KeySettings = std::vector<KeySetting>;
using Types = std::vector<zvbType>;
using Record = std::vector<ZvbDatavar>;

using KeyValue = std::variant<std::monostate, bool, std::int64_t, ZvbReal, ZvbString, double>;

/// What a value counts as in a column; std::monostate for a null.
inline KeyValue keyValue(const ZvbDatavar& value, zvbType type) {
  bool failed = value.isNull();
  KeyValue key;
  if (type == zvbTypeBoolean) {
    key = value.asBool(&failed);
  } else if (type == zvbTypeInteger) {
    key = value.asInt64(&failed);
  } else if (type == zvbTypeReal) {
    key = value.asReal(&failed);
  } else if (type == zvbTypeDate) {
    key = value.asDate().days();
    failed = failed || value.asDate().isNull();
  } else {
    key = value.asString();
    failed = failed || value.asString().isNull();
  }
  return failed ? KeyValue() : key;
}

inline int orderOf(bool a, bool b, bool /*ignoreCase*/) { return int{a} - int{b}; }
inline int orderOf(std::int64_t a, std::int64_t b, bool /*ignoreCase*/) {
  return int{a > b} - int{a < b};
}
inline int orderOf(double a, double b, bool /*ignoreCase*/) { return int{a > b} - int{a < b}; }
inline int orderOf(const ZvbReal& a, const ZvbReal& b, bool /*ignoreCase*/) { return a.compare(b); }
inline int orderOf(const ZvbString& a, const ZvbString& b, bool ignoreCase) {
  return ignoreCase ? a.compare(b, false) : std::string(a.asCstr()).compare(b.asCstr());
}

/// Above 0 when `a` stands behind `b`.
inline int orderByKey(const ZvbDatavar& a, const ZvbDatavar& b, zvbType type,
                      const KeySetting& key) {
  const KeyValue first = keyValue(a, type);
  const KeyValue second = keyValue(b, type);
  if (first.index() == 0 || second.index() == 0) {
    const int nullsFirst = int{second.index() == 0} - int{first.index() == 0};
    return (key.value & 2) != 0 ? -nullsFirst : nullsFirst;
  }
  const int order = std::visit(
      [&](const auto& value) {
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) {
          return 0;
        } else {
          return orderOf(value, std::get<std::decay_t<decltype(value)>>(second),
                         (key.value & 1) != 0);
        }
      },
      first);
  return key.descending ? -order : order;
}

inline std::vector<Record> modelSort(std::vector<Record> records, const Types& types,
                                     const KeySettings& keys) {
  std::stable_sort(records.begin(), records.end(), [&](const Record& a, const Record& b) {
    for (const KeySetting& key : keys) {
      const int order = orderByKey(a[key.column], b[key.column], types[key.column], key);
      if (order != 0) {
        return order < 0;
      }
    }
    return false;
  });
  return records;
}

/// A value with its type and, of a date, all of its bits.
inline std::string shownExactly(const ZvbDatavar& value) {
  if (value.isNull()) {
    return "null";
  }
  std::string text = zvbTypeToString(value.type());
  if (value.type() == zvbTypeDate) {
    text += ' ' + std::to_string(std::bit_cast<std::uint64_t>(value.asDate().days()));
  }
  const ZvbString shownText = value.asString();
  return text + (shownText.isNull() ? " without text" : std::string(": ") + shownText.asCstr());
}

/// A value as a sorter gives it back: of its column's type, or as it was if it cannot be.
inline std::string shownDelivered(ZvbDatavar value, zvbType type) {
  if (keyValue(value, type).index() != 0) {
    value.setType(type);
  }
  return shownExactly(value);
}

/// Values of few distinct keys in many disguises: as another type that converts, of another scale,
/// equal but for case, unlike only behind a long beginning, nulls, and what cannot be converted.
class HardValues {
 public:
  explicit HardValues(unsigned seed) : random_(seed) {}

  std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(random_()) % end; }
  bool coin() { return below(2) != 0; }

  ZvbDatavar value(zvbType type) {
    ZvbDatavar made;
    const std::uint32_t kind = below(20);
    if (kind < 2) {
      made.setType(type);
    } else if (kind == 2) {
      assignCell(&made, any({std::string("abc"), std::nan(""), true, 1e300}));
    } else if (kind == 3) {
      made.assign(ZvbDate::fromDays(below(3)));
    } else if (kind == 4 && type == zvbTypeString) {
      assignCell(&made, std::string(below(20000), 'x') + (coin() ? "a" : "B"));
    } else {
      assignCell(&made, any(usual(type)));
    }
    ZvbDatavar converted = made;
    return coin() && converted.setType(type) ? converted : made;
  }

 private:
  Cell any(const std::vector<Cell>& cells) {
    return cells[below(static_cast<std::uint32_t>(cells.size()))];
  }

  static const std::vector<Cell>& usual(zvbType type) {
    using Text = std::string;
    using Limits = std::numeric_limits<std::int64_t>;
    const auto whole = [](std::int64_t number) { return Cell(number); };
    static const std::vector<Cell> booleans = {true, false, Text("YES"), Text("no"), 2.5, whole(0)};
    static const std::vector<Cell> integers = {
        whole(-1),   whole(0), Text(" 42 "),         2.9,
        -2.9,        true,     whole(Limits::min()), whole(Limits::max()),
        whole(2),    whole(1), whole(256),           Text("9223372036854775808"),
        whole(65536)};
    static const std::vector<Cell> reals = {1.1,
                                            Text("0.110e1"),
                                            whole(1),
                                            Text("-1e-7"),
                                            Text("1e40"),
                                            Text("1e-60"),
                                            Text("1e999"),
                                            Text("-12345678901234567890123456789012345678"),
                                            1e300,
                                            -1e300,
                                            whole(0),
                                            Text("-12345678901234567890123456789012345679"),
                                            Text("-1e999"),
                                            1.1000000000000003};
    static const std::vector<Cell> dates = {0.0,
                                            -0.0,
                                            19782.25,
                                            -719162.0,
                                            1e9,
                                            -3.5,
                                            whole(19782),
                                            Text("2024-02-29"),
                                            Text("2024-02-29T00:00:00.001")};
    static const Text twelve = "twelve bytes";
    static const Text hundred(100, 'h');
    static const std::vector<Cell> texts = {Text(),
                                            Text("a"),
                                            Text("A"),
                                            Text("a "),
                                            Text("\x01"),
                                            Text("\xC3"),
                                            Text("\xFF"),
                                            Text("\xC3\xA4"),
                                            Text("\xC3\x84"),
                                            Text("\xFF"
                                                 "A"),
                                            whole(10),
                                            whole(9),
                                            true,
                                            1.5,
                                            twelve,
                                            twelve + "a",
                                            twelve + "A",
                                            twelve + "\xD0\x96",
                                            twelve + "\xD0\xB6",
                                            hundred,
                                            hundred + "b",
                                            hundred + "B",
                                            hundred + "a",
                                            Text("z\xF0\x9F\x98\x80"),
                                            Text("\xEF\xBF\xBD")};
    switch (type) {
      case zvbTypeBoolean:
        return booleans;
      case zvbTypeInteger:
        return integers;
      case zvbTypeReal:
        return reals;
      case zvbTypeDate:
        return dates;
      default:
        return texts;
    }
  }

  std::mt19937 random_;
};

inline constexpr zvbType allTypes[] = {zvbTypeBoolean, zvbTypeInteger, zvbTypeReal, zvbTypeString,
                                       zvbTypeDate};
