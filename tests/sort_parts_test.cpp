/// Parts of the sorter on their own: records as bytes, of which no damage leads beyond them, and
/// memory where the system has little.

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "datafile/ArenaPool.h"
#include "datafile/RecordCodec.h"

namespace {

/// Without checksums this is all that stands between a damaged block and the host's memory.
TEST(RecordCodecTest, ReadsNoItemBeyondItsEnd) {
  constexpr zvbType types[] = {zvbTypeInteger, zvbTypeString,  zvbTypeReal,
                               zvbTypeDate,    zvbTypeBoolean, zvbTypeString,
                               zvbTypeReal,    zvbTypeDate,    zvbTypeInteger};
  constexpr std::size_t count = std::size(types);
  RecordCodec codec;
  ASSERT_TRUE(codec.setColumns(types, count));
  std::unique_ptr<SortKey[]> keys(new SortKey[2]);
  keys[0] = {.column = 4, .descending = true};
  keys[1] = {.column = 5, .descending = true};
  ASSERT_TRUE(codec.setKeys(std::move(keys), 2));
  const char* texts[] = {"-300", "t", "12.5e77", "2024-02-29", "yes", "key", "1e40", "none"};
  ZvbDatavar values[count];  // the last one null, the one before not of its type
  ZvbDatavar own[count];
  const ZvbDatavar* places[count];
  for (std::size_t i = 0; i < count; ++i) {
    values[i].assign(i == 1 ? std::string(300, 't').c_str() : i + 1 < count ? texts[i] : nullptr);
    places[i] = &values[i];
  }
  RecordCodec::Sizes most;
  ASSERT_TRUE(codec.prepare(places, own, &most));
  std::vector<unsigned char> room(sortItem::longHead + most.key + most.values + sortItem::slack);
  const SortItem item = codec.encode(most, room.data());
  const std::vector<unsigned char> whole(room.begin(), room.begin() + (item.end() - room.data()));
  const auto decode = [&](std::vector<unsigned char> bytes) {
    bytes.resize(bytes.size() + sortItem::slack, 0xFF);
    return codec.decode(bytes.data(), own);
  };
  ASSERT_EQ(RecordCodec::Decoded::done, decode(whole));
  EXPECT_STREQ("key", own[5].asString().asCstr());
  EXPECT_STREQ("none", own[7].asString().asCstr());
  for (std::size_t size = 0; size < item.valuesSize; ++size) {
    std::vector<unsigned char> cut = whole;
    cut.resize(whole.size() - item.valuesSize + size);
    sortItem::writeHead(cut.data(), sortItem::shortHead, item.keySize, size);
    EXPECT_EQ(RecordCodec::Decoded::damaged, decode(cut)) << size;
  }
  for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
    std::vector<unsigned char> flipped = whole;
    flipped[bit / 8] ^= static_cast<unsigned char>(1U << bit % 8);
    if (sortItem::fits(flipped.data(), flipped.size())) {
      EXPECT_NE(RecordCodec::Decoded::memoryShort, decode(flipped)) << bit;
    }
  }
}

/// Arenas grow until one is more than the system has; smaller ones are then had all the same.
TEST(ArenaPoolTest, MakesDoWithWhatTheSystemGives) {
  SortPlan plan{SortSettings()};
  plan.arenaMemory = std::size_t{1} << 60;
  plan.arenaSize = std::size_t{1} << 59;
  ArenaPool pool(plan);
  std::vector<std::unique_ptr<SortArena>> arenas;
  const auto take = [&] {
    arenas.push_back(pool.take(100));
    return arenas.back() == nullptr ? 0 : arenas.back()->size();
  };
  std::size_t largest = 0;
  std::size_t size = take();
  for (; size > largest; size = take()) {
    largest = size;
  }
  EXPECT_GT(size, 0U);
  EXPECT_LT(largest, plan.arenaSize);
  for (std::unique_ptr<SortArena>& arena : arenas) {
    pool.giveBack(std::move(arena));
  }
  EXPECT_TRUE(pool.isAllIdle());
}

}  // namespace
