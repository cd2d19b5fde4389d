#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ZvbString.h"
#include "base/ZvbText.h"

namespace {

using Characters = std::vector<std::string>;

/// The size of the character that begins the text: of one shortest form of a code point, else 1.
std::size_t firstCharacterSize(std::string_view text) {
  constexpr unsigned leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
  constexpr unsigned leastCodePoints[] = {0, 0, 0x80, 0x800, 0x10000};
  const unsigned lead = static_cast<unsigned char>(text[0]);
  const std::size_t size = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  unsigned codePoint = lead - leads[size];
  for (std::size_t at = 1; at < size; ++at) {
    const unsigned byte = at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    if (byte < 0x80 || byte > 0xBF) {
      return 1;
    }
    codePoint = codePoint * 64 + byte - 0x80;
  }
  const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  return codePoint >= leastCodePoints[size] && codePoint <= 0x10FFFF && !isSurrogate ? size : 1;
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

int findCharacters(const Characters& text, const Characters& what, std::size_t start) {
  for (std::size_t at = start; at + what.size() <= text.size(); ++at) {
    if (join(text, at, at + what.size()) == join(what, 0, what.size())) {
      return static_cast<int>(at);
    }
  }
  return -1;
}

std::string replaceCharacters(const Characters& text, const Characters& what,
                              const std::string& with, std::size_t start, int count) {
  const int found = count == 0 ? -1 : findCharacters(text, what, start);
  if (found < 0) {
    return join(text, 0, text.size());
  }
  const auto at = static_cast<std::size_t>(found);
  const Characters rest(text.begin() + found + static_cast<int>(what.size()), text.end());
  return join(text, 0, at) + with + replaceCharacters(rest, what, with, 0, count - 1);
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
        ASSERT_EQ(make(text).find(make(what), static_cast<int>(start)),
                  findCharacters(characters, split(what), start));
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
    const bool isOwn = random() % 2 == 0;
    const std::string fresh(random() % 4 == 0 ? 46 + random() % 4 : random() % 90, 'f');
    const std::string part = isOwn ? twin.substr(from, random() % 90) : fresh;
    const char* const source = isOwn ? text.data() + from : fresh.data();
    switch (random() % 4) {
      case 0:
        ASSERT_TRUE(text.assign(source, part.size()));
        twin = part;
        break;
      case 1:
        ASSERT_TRUE(text.append(source, part.size()));
        twin += part;
        break;
      case 2:
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

TEST(ZvbStringTest, NullsStayNullUntilTextIsAppended) {
  ZvbString string(nullptr);
  EXPECT_TRUE(string.isNull() && string.isEmpty() && string.mid(0, 5).isNull());
  EXPECT_EQ(string.cStrSize(), 1U);
  bool failed = true;
  string.append(static_cast<const char*>(nullptr), &failed);
  EXPECT_TRUE(!failed && string.isNull());
  string.append("x", &failed);
  string.append(string, &failed);
  EXPECT_STREQ(string.asCstr(), "xx");
  string.append(ZvbString::outOfMemory(), &failed);
  EXPECT_TRUE(failed && ZvbString(ZvbString::outOfMemory()).memoryShort());
  const ZvbString moved = std::move(string);
  EXPECT_STREQ(moved.asCstr(), "xx");
}

TEST(ZvbStringTest, TextsEndAtAZeroByteAndFormatsMayBeOfAnySize) {
  ZvbString string;
  string.assign("ab\0c", 4);
  EXPECT_EQ(string.cStrSize(), 3U);
  string.assign(std::int64_t{-9223372036854775807} - 1);
  EXPECT_STREQ(string.asCstr(), "-9223372036854775808");
  for (const std::size_t size : {255U, 256U, 1000U}) {
    const std::string text(size, 'x');
    EXPECT_EQ(zvbStringFormat("%s", text.c_str()).asView(), text);
  }
}

}  // namespace
