/// Checking tables: sound ones have no finding, damaged ones the right one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>

#include "support/Bytes.h"
#include "support/OtherByteOrder.h"
#include "support/SlowRun.h"
#include "support/TableFixture.h"

namespace {

constexpr std::size_t firstColumn = 33;
constexpr std::size_t columnSize = 18;  // a head and a name of one letter
constexpr std::size_t textColumn = firstColumn + 4 * columnSize;
constexpr std::size_t firstElement = firstColumn + 5 * columnSize;
constexpr std::size_t elementSize = 16 + 23 + 24;
// Offsets in a row of the sample.
constexpr std::size_t dateAt = 2;
constexpr std::size_t integerAt = 11;
constexpr std::size_t realAt = 20;
constexpr std::size_t textAt = 45;
constexpr std::size_t shortRow = 51;

class TableCheck : public TableTest {
 protected:
  struct Finding {
    std::string file;
    std::int64_t offset;
    std::string rule;
  };

  /// One column of each type; elements of two rows, of a row with a long text, of a row of nulls.
  std::string makeSample() {
    const auto values = [](const std::string& text) {
      return row({true, 1.5, std::int64_t{7}, 2.5, text});
    };
    return makeTable(
        {{"b", zvbTypeBoolean},
         {"d", zvbTypeDate},
         {"i", zvbTypeInteger},
         {"r", zvbTypeReal},
         {"t", zvbTypeString, 200}},
        {values("abc"), values("xyz"), values(std::string(130, 'l')), row({{}, {}, {}, {}, {}})},
        100);
  }

  /// The file names in the catalogue.
  std::string dataOf(const std::string& name, std::size_t element) {
    return Bytes(directory.file(name))
        .content()
        .substr(firstElement + element * elementSize + 16, 22);
  }
  std::string indexOf(const std::string& name, std::size_t element) {
    return Bytes(directory.file(name))
        .content()
        .substr(firstElement + element * elementSize + 39, 23);
  }

  std::vector<Finding> check(const std::string& name) {
    std::vector<Finding> found;
    std::int64_t count = -1;
    const auto take = [](const ZvwtFinding* finding, void* context) {
      static_cast<std::vector<Finding>*>(context)->push_back(
          {finding->file, finding->offset, finding->rule});
      return true;
    };
    EXPECT_TRUE(zvwtCheckTable(manager.get(), name.c_str(), take, &found, &count, &error))
        << error.asCstr();
    EXPECT_EQ(count, static_cast<std::int64_t>(found.size()));
    return found;
  }

  void expectSound(const std::string& name) {
    for (const Finding& finding : check(name)) {
      ADD_FAILURE() << finding.file << " at " << finding.offset << ": " << finding.rule;
    }
  }
};

TEST_F(TableCheck, FindsNothingInSoundTables) {
  const std::string sample = makeSample();
  expectSound(sample);
  const std::string copy = makeSample();
  ASSERT_TRUE(manager->appendTable(copy.c_str(), sample.c_str(), &error)) << error.asCstr();
  expectSound(copy);
  expectSound(makeTable({}, {row({}), row({}), row({})}));
  expectSound(makeTable({{"a", zvbTypeString}}, {}));
  expectSound(
      makeTable({{"a", zvbTypeString}}, {row({std::string(200000, 'x')}), row({std::string()})}));
  expectSound(makeTable({{"a", zvbTypeInteger}}, {row({std::string("no number")})}));

  const std::string twice = "zvwt:" + sample + "?col=t&col=t";
  const TableHandle selected(manager->copyTable(0, "", twice.c_str(), &error));
  ASSERT_TRUE(selected->close());
  expectSound(selected->getName().asCstr());

  const TableHandle sorted(manager->createTable(2, 1, 0, &error));
  ASSERT_EQ(0, sorted->setSortColumn(0, 0, true, 0));
  for (std::int64_t i = 0; i < 100; ++i) {  // the columns have no names and no types
    ASSERT_TRUE(write(*sorted, row({std::to_string(i), {}})));
  }
  ASSERT_TRUE(sorted->close());
  expectSound(sorted->getName().asCstr());
}

TEST_F(TableCheck, FindsNothingInWhatOthersMayWrite) {
  const std::string name = makeSample();
  for (const std::string& left : {dataOf(name, 2), indexOf(name, 2)}) {
    Bytes file(directory.file(left));
    file.insert(file.size(), "of a killed writer").save();
  }
  expectSound(name);
  for (const std::string& left : {dataOf(name, 2), indexOf(name, 2)}) {
    Bytes file(directory.file(left));
    file.cut(file.size() - 18).save();
  }
  OtherByteOrder(directory, name).reverse();
  expectSound(name);

  const std::string later = makeSample();  // a later minor version
  Bytes(directory.file(later))
      .set<std::uint32_t>(firstElement, 20)
      .insert(firstElement + 16, "more")
      .set<std::uint16_t>(firstColumn, 18)
      .insert(firstColumn + 16, "..")
      .set<std::int16_t>(2, 150)
      .set<std::uint16_t>(4, 36)
      .insert(32, "more")
      .save();
  expectSound(later);

  const std::string indexless = makeSample();
  Bytes bytes(directory.file(indexless));
  bytes.set<std::uint16_t>(firstElement + 2 * elementSize + 6, 0).cut(bytes.size() - 24).save();
  expectSound(indexless);
  Bytes(directory.file(dataOf(indexless, 2))).set(2, '\x07').save();
  EXPECT_EQ(1U, check(indexless).size());  // nothing leads to what follows
}

TEST_F(TableCheck, FindsEachDamageInItsPlace) {
  const std::string name = makeSample();
  const std::string data = dataOf(name, 0);
  const std::string longText = dataOf(name, 1);
  const std::string index = indexOf(name, 0);
  const std::size_t end = firstElement + 3 * elementSize;
  const auto put = [](std::size_t offset, auto number) {
    return [=](Bytes& bytes) { bytes.set(offset, number); };
  };
  const auto cut = [](std::size_t size) { return [=](Bytes& bytes) { bytes.cut(size); }; };
  const auto repeat = [](std::size_t from, std::size_t size) {
    return [=](Bytes& bytes) { bytes.repeat(from, size, from + elementSize); };
  };
  const auto grow = [](std::size_t at) { return [=](Bytes& bytes) { bytes.insert(at, "x"); }; };
  struct Damage {
    const std::string& file;
    std::function<void(Bytes&)> damage;
    std::size_t offset;
  };
  const Damage damages[] = {
      {name, put(0, std::uint16_t{3}), 0},
      {name, put(2, std::int16_t{99}), 2},
      {name, put(2, std::int16_t{200}), 2},
      {name, put(4, std::uint16_t{33}), 4},
      {name, [](Bytes& bytes) { bytes.set(2, std::int16_t{101}).set(4, std::uint16_t{60000}); }, 4},
      {name, put(6, std::uint16_t{0}), 6},
      {name, put(8, std::uint32_t{0xFFFFFFFF}), 8},
      {name, put(12, std::uint32_t{0xFFFFFFFF}), 12},
      {name, put(24, std::int64_t{5}), 24},
      {name, put(24, std::int64_t{-1}), 24},
      {name, put(32, 'x'), 32},
      {name, put(firstColumn, std::uint16_t{17}), firstColumn},
      {name, put(firstColumn + 2, std::uint16_t{6}), firstColumn + 2},
      {name, put(firstColumn + 2, std::uint16_t{0x101}), firstColumn + 2},
      {name, put(firstColumn + 4, std::uint32_t{0x7FFFFFFF}), firstColumn + 4},
      {name, put(firstColumn + 16, '\0'), firstColumn + 16},
      {name, put(firstColumn + 17, 'x'), firstColumn + 17},
      {name, put(textColumn + 8, std::int32_t{129}), textColumn + 8},
      {name, put(textColumn + 12, std::int32_t{130}), textColumn + 12},
      {name, put(textColumn + 12, std::int32_t{-1}), textColumn + 12},
      {name, put(firstElement, std::uint32_t{17}), firstElement},
      {name, put(firstElement + 4, std::uint16_t{22}), firstElement + 4},
      {name, put(firstElement + 6, std::uint16_t{25}), firstElement + 6},
      {name, put(firstElement + 8, std::int64_t{-1}), firstElement + 8},
      {name, put(firstElement + 20, 'X'), firstElement + 16},
      {name, put(firstElement + 38, 'x'), firstElement + 16},
      {name, put(firstElement + 50, '/'), firstElement + 39},
      {name, repeat(firstElement + 16, 23), firstElement + elementSize + 16},
      {name, repeat(firstElement + 39, 24), firstElement + elementSize + 39},
      {name, cut(end - 1), end - 24},
      {name, cut(31), 0},
      {name, grow(end), end},
      {data, put(0, std::uint8_t{0x81}), 1},
      {data, put(1, std::uint8_t{2}), 1},
      {data, put(dateAt + 1, std::nan("")), dateAt + 1},
      {data, put(integerAt, std::uint8_t{2}), integerAt},
      {data, put(realAt + 1, std::uint64_t{1} << 32), realAt + 1},
      {data, put(realAt + 17, ~std::uint64_t{0}), realAt + 1},
      {data, put(textAt + 1, std::uint8_t{0}), textAt + 1},
      {data, put(textAt + 3, '\0'), textAt + 3},
      {data, put(textAt + 5, 'x'), textAt + 5},
      {data, put(shortRow, std::uint8_t{7}), shortRow},
      {data, cut(realAt), realAt},
      {data, cut(shortRow), shortRow},
      {data, grow(2 * shortRow), 2 * shortRow},
      {longText, put(textAt + 4, std::uint8_t{16}), textAt + 1},
      {longText, put(textAt + 2, std::uint8_t{1}), textAt + 5},
      {longText, cut(100), textAt + 5},
      {index, put(0, std::int64_t{1}), 0},
      {index, put(8, std::int64_t{shortRow - 1}), 8},
      {index, put(8, std::int64_t{-1}), 8},
      {index, cut(15), 15},
      {index, grow(16), 16},
  };
  for (const Damage& damage : damages) {
    const Bytes whole(directory.file(damage.file));
    Bytes damaged(whole);
    damage.damage(damaged);
    damaged.save();
    const auto found = check(name);
    whole.save();
    const std::string place = damage.file + " at " + std::to_string(damage.offset);
    ASSERT_EQ(1U, found.size()) << place << (found.empty() ? "" : found[1].rule);
    EXPECT_EQ(directory.file(damage.file), found[0].file) << place << ' ' << found[0].rule;
    EXPECT_EQ(damage.offset, static_cast<std::size_t>(found[0].offset)) << found[0].rule;
  }
  expectSound(name);

  for (const std::string& lost : {index, data}) {
    const Bytes whole(directory.file(lost));
    std::filesystem::remove(directory.file(lost));
    ASSERT_EQ(1U, check(name).size());
    EXPECT_EQ(lost, check(name)[0].file);
    std::filesystem::create_directory(directory.file(lost));
    ASSERT_EQ(1U, check(name).size());
    EXPECT_EQ(directory.file(lost), check(name)[0].file);
    std::filesystem::remove(directory.file(lost));
    whole.save();
  }
}

TEST_F(TableCheck, ReadsOnBehindDamagedRows) {
  const std::string name = makeTable({{"i", zvbTypeInteger}}, std::vector<Row>(5, row({true})));
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwte_")) {
      Bytes(directory.file(file)).set(9, '\x01').set(27, '\x83').save();
    }
  }
  const auto found = check(name);
  ASSERT_EQ(2U, found.size());
  EXPECT_EQ(9, found[0].offset);
  EXPECT_EQ(32, found[1].offset);  // row 3 is shorter than the entry of row 4 tells
}

TEST_F(TableCheck, FindsOneFileAmongManyElements) {
  constexpr std::size_t elements = 1000;
  const std::string name = makeCountingTable(elements, 1);
  expectSound(name);
  const std::size_t first = Bytes(directory.file(name)).size() - elements * elementSize;
  const auto tried = isSlowRun ? std::vector<std::size_t>{767}
                               : std::vector<std::size_t>{0, 1, 511, 512, 767, 998};
  for (const std::size_t element : tried) {
    Bytes whole(directory.file(name));
    Bytes(directory.file(name))
        .repeat(first + element * elementSize + 16, 23, first + 999 * elementSize + 16)
        .save();
    ASSERT_EQ(1U, check(name).size()) << element;
    EXPECT_EQ(first + 999 * elementSize + 16, static_cast<std::size_t>(check(name)[0].offset));
    whole.save();
  }
}

TEST_F(TableCheck, EndsWhenNoMoreIsWanted) {
  const std::string name = makeCountingTable(1000);
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwtei_")) {
      std::filesystem::resize_file(directory.file(file), 0);
      std::filesystem::resize_file(directory.file(file), 8000);
    }
  }
  EXPECT_EQ(100U, check(name).size());
  std::int64_t count = 0;
  const auto refuse = [](const ZvwtFinding*, void*) { return false; };
  EXPECT_TRUE(zvwtCheckTable(manager.get(), name.c_str(), refuse, nullptr, &count, &error));
  EXPECT_EQ(1, count);

  EXPECT_FALSE(zvwtCheckTable(manager.get(), "zvwt_none", nullptr, nullptr, &count, &error));
  EXPECT_EQ(1353, messageId(error));
  EXPECT_FALSE(zvwtCheckTable(manager.get(), "a/b", nullptr, nullptr, &count, &error));
  EXPECT_EQ(1784, messageId(error));
  EXPECT_EQ(0, count);
}

}  // namespace
