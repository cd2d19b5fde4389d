#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ZvbString.h"
#include "base/ZvbText.h"

namespace {

using Characters = std::vector<std::string>;

unsigned byteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

/// The size of the character that begins the text, by the table of well-formed byte sequences.
std::size_t firstCharacterSize(std::string_view text) {
  struct Sequence {
    unsigned firstFrom, firstTo, secondFrom, secondTo;
    std::size_t size;
  };
  constexpr Sequence sequences[] = {{0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
                                    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
                                    {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
                                    {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
  for (const Sequence& sequence : sequences) {
    bool matches = byteAt(text, 0) >= sequence.firstFrom && byteAt(text, 0) <= sequence.firstTo &&
                   byteAt(text, 1) >= sequence.secondFrom && byteAt(text, 1) <= sequence.secondTo;
    for (std::size_t at = 2; at < sequence.size; ++at) {
      matches = matches && byteAt(text, at) >= 0x80 && byteAt(text, at) <= 0xBF;
    }
    if (matches) {
      return sequence.size;
    }
  }
  return 1;
}

Characters split(std::string_view text) {
  Characters characters;
  while (!text.empty()) {
    characters.emplace_back(text.substr(0, firstCharacterSize(text)));
    text.remove_prefix(characters.back().size());
  }
  return characters;
}

std::string join(const Characters& characters, std::size_t from, std::size_t to) {
  std::string text;
  for (std::size_t at = from; at < std::min(to, characters.size()); ++at) {
    text += characters[at];
  }
  return text;
}

std::optional<std::size_t> findCharacters(const Characters& text, const Characters& what,
                                          std::size_t start) {
  for (std::size_t at = start; at + what.size() <= text.size(); ++at) {
    if (std::equal(what.begin(), what.end(), text.begin() + static_cast<std::ptrdiff_t>(at))) {
      return at;
    }
  }
  return std::nullopt;
}

std::string replaceCharacters(Characters text, const Characters& what, const std::string& with,
                              std::size_t start, int count) {
  while (count-- != 0) {
    const std::optional<std::size_t> at = findCharacters(text, what, start);
    if (!at) {
      break;
    }
    const auto first = text.begin() + static_cast<std::ptrdiff_t>(*at);
    text.erase(first, first + static_cast<std::ptrdiff_t>(what.size()));
    text.insert(text.begin() + static_cast<std::ptrdiff_t>(*at), with);
    start = *at + 1;
  }
  return join(text, 0, text.size());
}

std::vector<std::string> allTexts(std::string_view alphabet, std::size_t longest) {
  std::vector<std::string> texts = {""};
  for (std::size_t at = 0; at < texts.size() && texts[at].size() < longest; ++at) {
    const std::string shorter = texts[at];
    for (const char byte : alphabet) {
      texts.push_back(shorter + byte);
    }
  }
  return texts;
}

ZvbString make(const std::string& text) { return {text.c_str()}; }

/// Lead bytes of each length, of overlong forms and of surrogates, and what may follow them.
constexpr std::string_view hardBytes = "a\x80\x90\xBF\xC1\xC3\xE0\xED\xF0\xF4";

TEST(ZvbStringTest, CharactersOfAnyBytesAreCountedAndCutAlike) {
  for (const std::string& text : allTexts(hardBytes, 5)) {
    const Characters characters = split(text);
    const ZvbString string = make(text);
    ASSERT_EQ(string.length(), characters.size());
    for (std::size_t limit = 0; limit <= text.size() + 1; ++limit) {
      std::size_t left = characters.size();
      while (join(characters, 0, left).size() > limit) {
        --left;
      }
      const std::string cut = join(characters, 0, left);
      ASSERT_EQ(zvbCutAtCharacter(text.data(), text.size(), limit), cut.size());
      ASSERT_EQ(string.mid(0, static_cast<int>(left)).asView(), cut);
      ASSERT_EQ(string.mid(static_cast<unsigned>(left), -1).asView(), text.substr(cut.size()));
    }
  }
}

TEST(ZvbStringTest, WordsOfAsciiAndCharactersBetweenThemAreWalkedAlike) {
  for (std::size_t before = 0; before < 20; ++before) {
    const std::string text = std::string(before, 'x') + "\xC3\xA9" + std::string(17, 'y');
    ASSERT_EQ(make(text).length(), before + 18);
    for (std::size_t keep = 0; keep <= before + 19; ++keep) {
      ZvbString string = make(text);
      string.truncate(static_cast<unsigned>(keep));
      ASSERT_EQ(string.asView(), join(split(text), 0, keep));
    }
  }
}

TEST(ZvbStringTest, FindAndReplaceMatchWholeCharacters) {
  const std::vector<std::string> needles = allTexts("ab\x80\xC3", 2);
  for (const std::string& text : allTexts("ab\x80\xC3", 4)) {
    const Characters characters = split(text);
    for (const std::string& what : needles) {
      for (unsigned start = 0; start < 6; ++start) {
        const auto expected = findCharacters(characters, split(what), start);
        ASSERT_EQ(make(text).find(make(what), static_cast<int>(start)),
                  expected ? static_cast<int>(*expected) : -1);
        for (int count = -1; count <= 2 && !what.empty(); ++count) {
          ASSERT_EQ(make(text).replace(make(what), "<\xC3\xA9>", start, count).asView(),
                    replaceCharacters(characters, split(what), "<\xC3\xA9>", start, count));
        }
      }
    }
  }
  EXPECT_EQ(make("abab").find("b", -3), 1);
  EXPECT_EQ(make("abab").replace("", "x", 0, -1).asView(), "abab");
  EXPECT_EQ(make("a&b&c").replace("&", ZvbString(), 0, -1).asView(), "abc");
}

TEST(ZvbStringTest, CompareIgnoresCaseByOneFixedFolding) {
  const std::pair<const char*, const char*> equal[] = {
      {"Name_Z9", "nAME_z9"},   {"ÀÖØÞŸµ", "àöøþÿμ"},       {"ĀĮĴĹŊŶŻ", "āįĵĺŋŷż"},
      {"ΆΈΌΎΏΑΣΫ", "άέόύώαςϋ"}, {"ЀЏАЯѠҊӀӁӐ", "ѐџаяѡҋӏӂӑ"}, {"", nullptr}};
  for (const auto& [left, right] : equal) {
    EXPECT_EQ(make(left).compare(right, false), 0) << left;
    EXPECT_EQ(make(left).compare(right, true) == 0, right == nullptr) << left;
  }
  const char* const ascending[] = {"[",          "a",      "AB",     "ab\xC3\x97", "ab\xC3\x9F",
                                   "ab\xC3\xB7", "ab\xC3", "ab\xC4", "b",          "~"};
  for (std::size_t left = 0; left < std::size(ascending); ++left) {
    for (std::size_t right = 0; right < std::size(ascending); ++right) {
      const int order = make(ascending[left]).compare(ascending[right], false);
      EXPECT_EQ(order < 0, left < right) << ascending[left] << ' ' << ascending[right];
      EXPECT_EQ(order > 0, left > right) << ascending[left] << ' ' << ascending[right];
    }
  }
  EXPECT_LT(make("B").compare("a", true), 0);
  EXPECT_GT(make("\xFF").compare("a", true), 0);
}

TEST(ZvbStringTest, TextsKeepTheirBytesAcrossTheInlineBoundaryAndUnderAliasing) {
  std::mt19937 random(1);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same run every time
  ZvbText text;
  std::string twin;
  for (int step = 0; step < 20000; ++step) {
    const std::size_t from = random() % (twin.size() + 1);
    const std::size_t size = random() % (twin.size() - from + 1);
    const std::string fresh(random() % 4 == 0 ? 46 + random() % 4 : random() % 90, 'f');
    const std::string part = twin.substr(from, size);
    switch (random() % 6) {
      case 0:
        ASSERT_TRUE(text.assign(fresh.data(), fresh.size()));
        twin = fresh;
        break;
      case 1:
        ASSERT_TRUE(text.assign(text.data() + from, size));
        twin = part;
        break;
      case 2:
        ASSERT_TRUE(text.append(fresh.data(), fresh.size()));
        twin += fresh;
        break;
      case 3:
        ASSERT_TRUE(text.append(text.data() + from, size));
        twin += part;
        break;
      case 4:
        text.truncate(from);
        twin.resize(from);
        break;
      default: {
        ZvbText other;
        other.take(text);
        ASSERT_EQ(text.size(), 0U);
        text.take(other);
      }
    }
    twin.resize(std::min<std::size_t>(twin.size(), 200));
    text.truncate(200);
    ASSERT_EQ(text.view(), twin);
    ASSERT_EQ(text.data()[text.size()], '\0');
  }
}

TEST(ZvbStringTest, NullEmptyAndZeroBytes) {
  ZvbString string(nullptr);
  EXPECT_TRUE(string.isNull() && string.isEmpty() && string.mid(0, 5).isNull());
  EXPECT_EQ(string.length(), 0U);
  EXPECT_EQ(string.cStrSize(), 1U);
  bool failed = true;
  string.append(static_cast<const char*>(nullptr), &failed);
  EXPECT_TRUE(!failed && string.isNull());
  string.append("x", &failed);
  string.append(string, &failed);
  EXPECT_TRUE(!failed && !string.isNull());
  EXPECT_STREQ(string.asCstr(), "xx");
  string.assign("ab\0c", 4);
  EXPECT_EQ(string.cStrSize(), 3U);
  string.assign("abc", 2);
  EXPECT_STREQ(string.asCstr(), "ab");
  string.append(ZvbString::outOfMemory(), &failed);
  EXPECT_TRUE(failed);
  EXPECT_STREQ(string.asCstr(), "ab");
  EXPECT_TRUE(ZvbString(ZvbString::outOfMemory()).memoryShort());
  const ZvbString moved = std::move(string);
  EXPECT_STREQ(moved.asCstr(), "ab");
}

TEST(ZvbStringTest, NumbersAndFormats) {
  ZvbString string;
  string.assign(-7);
  EXPECT_STREQ(string.asCstr(), "-7");
  string.assign(std::int64_t{-9223372036854775807} - 1);
  EXPECT_STREQ(string.asCstr(), "-9223372036854775808");
  EXPECT_STREQ(zvbStringFormat("%d.%s", 1, "2").asCstr(), "1.2");
  for (const std::size_t size : {255U, 256U, 1000U}) {
    const std::string text(size, 'x');
    EXPECT_EQ(zvbStringFormat("%s", text.c_str()).asView(), text);
  }
}

}  // namespace
