/// Small tables, cut at every length, with every bit turned and every byte set to what makes most
/// of lengths and tags, in each of their files. Used in every way they give rows or an error, take
/// no more memory, rows and time than sound ones, and harm nothing else.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <iostream>
#include <map>
#include <set>

#include "support/OtherByteOrder.h"
#include "support/ShortMemory.h"
#include "support/SlowRun.h"
#include "support/TableFixture.h"
#include "support/ThisProcess.h"
#include "support/ThisSystem.h"

namespace {

using Lines = std::vector<std::string>;
using Files = std::map<std::string, std::string>;  // names and contents

/// What runs slowly sees some damages of each kind; on Windows every file takes its time.
constexpr int stride = !isSlowRun ? 1 : isWindows ? 211 : 23;
const std::string failed = "failed";

struct Sample {
  const char* name;
  std::vector<Column> columns;
  std::vector<Row> rows;
  std::int64_t maxElementSize = 0;
  bool isOfOtherByteOrder = false;
};

/// For the names of tests.
std::ostream& operator<<(std::ostream& stream, const Sample& sample) {
  return stream << sample.name;
}

std::string repeated(const std::string& text, int times) {
  return times == 0 ? "" : text + repeated(text, times - 1);
}

const std::vector<Column> everyType = {{"b", zvbTypeBoolean},
                                       {"d", zvbTypeDate},
                                       {"i", zvbTypeInteger},
                                       {"r", zvbTypeReal},
                                       {"t", zvbTypeString, 20}};
const std::vector<Row> everyValue = {
    row({true, 1.5, std::int64_t{7}, 2.5, std::string("abc")}), row({{}, {}, {}, {}, {}}),
    row({false, {}, std::string("no number"), -1e-30, std::string()}),
    row({{}, -2.0, std::int64_t{-1}, {}, std::string("x\xC3\xA9")})};
const Sample samples[] = {
    {"EveryType", everyType, everyValue},
    {"SeveralElements",
     {{"t", zvbTypeString}, {"u", zvbTypeString, 12}},
     {row({std::string(126, 'k'), repeated("\xE2\x82\xAC", 4)}), row({std::string(127, 'l'), {}}),
      row({repeated("\xF0\x9F\x98\x80", 32), std::string("u")}),
      row({std::string(), std::string("v")}), row({{}, {}})},
     130},
    {"OtherByteOrder", everyType, everyValue, 60, true},
    {"NoColumns", {}, {row({}), row({}), row({})}},
};

struct Damage {
  std::string what;
  std::string content;
};

std::vector<Damage> damagesOf(const std::string& content) {
  std::vector<Damage> damages;
  for (std::size_t size = 0; size < content.size(); ++size) {
    damages.push_back({"cut to " + std::to_string(size), content.substr(0, size)});
  }
  const auto put = [&](std::size_t at, unsigned byte) {
    const std::string what = std::to_string(at) + " set to " + std::to_string(byte);
    damages.push_back({what, content});
    damages.back().content[at] = static_cast<char>(byte);
  };
  for (std::size_t at = 0; at < content.size(); ++at) {
    const auto before = static_cast<unsigned char>(content[at]);
    for (unsigned bit = 0; bit < 8; ++bit) {
      put(at, before ^ (1U << bit));
    }
    for (const unsigned byte : {0x00U, 0x7FU, 0x80U, 0xFFU}) {
      if (std::popcount(byte ^ before) > 1) {
        put(at, byte);
      }
    }
  }
  return damages;
}

class DamagedFiles : public TableTest, public testing::WithParamInterface<Sample> {
 protected:
  DamagedFiles() : TableTest(memoryDirectory()) {}
  void SetUp() override;

  void useInEveryWay();
  void useDamaged(const std::string& file, const std::string& damage);
  void check();
  Lines readForwards();
  void compareWithCheck(const Lines& lines) const;
  void readParts();
  void readByCursors();
  void describe();
  void copy(const Lines& before);
  void append(const Lines& before);
  void remove();

  Files filesNow() const;
  void put(const Files& files) const;
  void expectOthersAreWhole(const Files& now) const;
  void expectReason(const ZvbString& text) const;
  Lines expectRows(const TableHandle& table);
  template <typename Cursor>
  void expectRows(Cursor* newCursor);

  std::string table_;
  std::string more_;           // a table with the same columns, whose row is appended
  std::set<std::string> own_;  // the table's files
  Files whole_;                // those of both tables
  Files current_;              // the same with the damage
  std::string damaged_;        // the file's name
  std::size_t rows_ = 0;       // of the table
  Lines sound_;                // its rows
  bool isSound_ = true;        // nothing is found by a check
  std::int64_t mostMemory_ = std::int64_t{1} << 20;
  std::int64_t operations_ = 0;
};

void DamagedFiles::SetUp() {
  const Sample& sample = GetParam();
  table_ = makeTable(sample.columns, sample.rows, sample.maxElementSize);
  if (sample.isOfOtherByteOrder) {
    OtherByteOrder(directory, table_).reverse();
  }
  for (const std::string& name : directory.names()) {
    own_.insert(name);
  }
  more_ = makeTable(sample.columns, {sample.rows[0]});
  whole_ = filesNow();
  current_ = whole_;
  rows_ = sample.rows.size();
}

// ---- Files

Files DamagedFiles::filesNow() const {
  Files files;
  for (const std::string& name : directory.names()) {
    files[name] = TemporaryDirectory::read(directory.file(name));
  }
  return files;
}

/// Makes the directory hold these files and no others.
void DamagedFiles::put(const Files& files) const {
  const Files now = filesNow();
  for (const auto& [name, content] : now) {
    if (!files.contains(name)) {
      std::filesystem::remove(directory.file(name));
    }
  }
  for (const auto& [name, content] : files) {
    const auto found = now.find(name);
    if (found == now.end() || found->second != content) {
      (void)directory.write(name, content);
    }
  }
}

void DamagedFiles::expectOthersAreWhole(const Files& now) const {
  for (const auto& [name, content] : whole_) {
    EXPECT_TRUE(own_.contains(name) || (now.contains(name) && now.at(name) == content)) << name;
  }
}

// ---- One way each

void DamagedFiles::expectReason(const ZvbString& text) const {
  EXPECT_FALSE(isSound_) << text.asCstr();
  EXPECT_GT(messageId(text), 0) << text.asCstr();
  EXPECT_GT(text.asView().size(), 10U) << text.asCstr();
}

/// Reads on behind rows that cannot be read. No damage makes a table have other rows than it had.
Lines DamagedFiles::expectRows(const TableHandle& table) {
  ++operations_;
  Lines lines;
  if (table == nullptr) {
    expectReason(error);
    return lines;
  }
  EXPECT_EQ(static_cast<std::int64_t>(rows_), table->getRowCount());
  std::vector<ZvbDatavar> values(static_cast<std::size_t>(table->getColumnCount()) + 1);
  bool end = false;
  for (std::size_t i = 0; i <= rows_ && !end; ++i) {
    if (table->readRow(values.data(), &end)) {
      std::string line;
      for (int column = 0; column < table->getColumnCount(); ++column) {
        line += shown(values[static_cast<std::size_t>(column)]) + '|';
      }
      lines.push_back(line);
    } else if (!end) {
      expectReason(table->getErrorMessage());
      lines.push_back(failed);
    }
  }
  EXPECT_TRUE(end || !isSound_);
  return lines;
}

Lines DamagedFiles::readForwards() { return expectRows(open(table_)); }

/// A table without a finding has the rows that it had, and whole. In the data another value may be
/// as good as the one before.
void DamagedFiles::compareWithCheck(const Lines& lines) const {
  if (!isSound_ || sound_.empty()) {
    return;
  }
  ASSERT_EQ(sound_.size(), lines.size());
  const auto [before, now] = std::mismatch(sound_.begin(), sound_.end(), lines.begin());
  if (before != sound_.end()) {
    EXPECT_TRUE(damaged_.starts_with("zvwte_") &&
                std::equal(before + 1, sound_.end(), now + 1, lines.end()) && *now != failed)
        << *before << " is " << *now;
  }
}

void DamagedFiles::readParts() {
  const int count = static_cast<int>(GetParam().columns.size());
  const int numbers[] = {count - 1, 0};
  const ZvbString names[] = {"T", "none", "d", "t"};
  const RowRange range = {1, 2};
  const std::string uri = "zvwt:" + table_;
  for (const bool backwards : {false, true}) {
    (void)expectRows(open(table_, &range, backwards));
    (void)expectRows(TableHandle(manager->openTable(table_.c_str(), std::min(count, 2), numbers,
                                                    nullptr, backwards, &error)));
    (void)expectRows(
        TableHandle(manager->openTable(table_.c_str(), 4, names, nullptr, backwards, &error)));
    (void)expectRows(openUri(uri + "?rows=2,-1&col=u&col=x,t&col=k,42,2", backwards));
    (void)expectRows(openUri(uri, backwards));
  }
}

template <typename Cursor>
void DamagedFiles::expectRows(Cursor* newCursor) {
  const std::unique_ptr<Cursor, zvwt::Release> cursor(newCursor);
  ++operations_;
  cursor->setRemoveOnClose(false);
  TableHandle table = openUri(table_);
  if (table == nullptr || !cursor->setWorkTable(table.release())) {
    return;
  }
  for (const bool again : {false, true}) {
    int step = zvbCursorRow;
    for (std::size_t i = 0; i <= rows_ && step == zvbCursorRow; ++i) {
      step = cursor->next();
      (void)cursor->value(0);
    }
    EXPECT_NE(zvbCursorRow, step);
    if (step == zvbCursorFailed || (!again && !cursor->rewind())) {
      expectReason(cursor->errorMessage());
      return;
    }
  }
}

void DamagedFiles::readByCursors() {
  expectRows(zvwtCreateCursor(manager.get()));
  expectRows(zvwtCreateStringCursor(manager.get()));
}

void DamagedFiles::describe() {
  operations_ += 4;
  RowRange ranges[3];
  int parts = 3;
  if (!manager->partitionTable(table_.c_str(), &parts, ranges, &error)) {
    expectReason(error);
  } else {
    EXPECT_LE(parts, 3);
    EXPECT_EQ(static_cast<std::int64_t>(rows_),
              ranges[parts - 1].firstRow + ranges[parts - 1].rowCount);
  }
  ZvwtTableSizes sizes;
  if (!zvwtGetTableSizes(manager.get(), table_.c_str(), &sizes, &error)) {
    expectReason(error);
  }
  if (const TableHandle table = openUri(table_)) {
    EXPECT_NE(nullptr, zvwt::Statistics(table->getStatistics()));
    ZvbString xml;
    bool end = false;
    EXPECT_TRUE(table->asXml(0, -1, &xml, &end)) << table->getErrorMessage().asCstr();
    EXPECT_TRUE(table->getErrorMessage().isEmpty() || !isSound_);
  }
}

void DamagedFiles::check() {
  ++operations_;
  std::int64_t findings = 0;
  isSound_ = false;
  const bool made =
      zvwtCheckTable(manager.get(), table_.c_str(), nullptr, nullptr, &findings, &error);
  if (!made) {
    expectReason(error);
  }
  isSound_ = made && findings == 0;
}

/// What a copy has is what was read.
void DamagedFiles::copy(const Lines& before) {
  ++operations_;
  TableHandle made(manager->copyTable(60, "", table_.c_str(), &error));
  if (made == nullptr) {
    expectReason(error);
    return;
  }
  EXPECT_EQ(0, std::count(before.begin(), before.end(), failed));
  EXPECT_TRUE(made->close()) << made->getErrorMessage().asCstr();
  const std::string name = made->getName().asCstr();
  EXPECT_EQ(before.size(), readTable(name).size());
  EXPECT_TRUE(manager->deleteTable(name.c_str(), &error)) << error.asCstr();
}

/// Whatever could be read before can be read afterwards. An append that fails may write the
/// catalogue anew.
void DamagedFiles::append(const Lines& before) {
  ++operations_;
  const bool appended = manager->appendTable(table_.c_str(), more_.c_str(), &error);
  Files now = filesNow();
  expectOthersAreWhole(now);
  if (!appended) {
    EXPECT_TRUE(!isSound_ || damaged_ == table_ || GetParam().isOfOtherByteOrder) << error.asCstr();
    now[table_] = current_[table_];
    EXPECT_EQ(current_, now);
  }
  rows_ += appended ? 1 : 0;
  const Lines after = readForwards();
  rows_ = GetParam().rows.size();
  ASSERT_EQ(before.size() + (appended ? 1 : 0), after.size());
  EXPECT_TRUE(!appended || after.back() != failed || before.back() == failed);
  for (std::size_t i = 0; i < before.size(); ++i) {
    EXPECT_TRUE(before[i] == failed || before[i] == after[i]) << before[i] << " is " << after[i];
  }
}

void DamagedFiles::remove() {
  ++operations_;
  const bool isWhole = damaged_ != table_ && current_.contains(damaged_);
  const bool removed = manager->deleteTable(table_.c_str(), &error);
  const Files now = filesNow();
  expectOthersAreWhole(now);
  for (const auto& [name, content] : now) {
    EXPECT_TRUE(current_.contains(name) && current_.at(name) == content) << name;
  }
  EXPECT_TRUE(removed ? !now.contains(table_) : !isWhole && messageId(error) > 0);
  EXPECT_TRUE(!isWhole || now.size() + own_.size() == whole_.size());
}

// ---- All of them

void DamagedFiles::useInEveryWay() {
  const auto start = std::chrono::steady_clock::now();
  const std::size_t handles = openFiles().size();
  const PeakMemory memory;
  check();
  const Lines lines = readForwards();
  compareWithCheck(lines);
  Lines backwards = expectRows(open(table_, nullptr, true));
  EXPECT_TRUE(!isSound_ ||
              std::equal(lines.begin(), lines.end(), backwards.rbegin(), backwards.rend()));
  readParts();
  readByCursors();
  describe();
  copy(lines);
  EXPECT_EQ(current_, filesNow());
  append(lines);
  put(current_);
  remove();
  EXPECT_LT(memory.bytes(), mostMemory_);
  EXPECT_EQ(handles, openFiles().size());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

void DamagedFiles::useDamaged(const std::string& file, const std::string& damage) {
  damaged_ = file;
  put(current_);
  useInEveryWay();
  ASSERT_FALSE(HasFailure()) << file << ": " << damage;
  put(whole_);
  current_ = whole_;
}

TEST_P(DamagedFiles, GiveRowsOrAnError) {
  const PeakMemory memory;
  useInEveryWay();
  ASSERT_FALSE(HasFailure()) << "without damage";
  mostMemory_ = memory.bytes() + 300 * 1024;
  put(whole_);
  sound_ = readForwards();
  int damages = 0;
  for (const std::string& file : own_) {
    current_.erase(file);
    ASSERT_NO_FATAL_FAILURE(useDamaged(file, "missing"));
    for (const Damage& damage : damagesOf(whole_[file])) {
      if (damages++ % stride == 0) {
        current_[file] = damage.content;
        ASSERT_NO_FATAL_FAILURE(useDamaged(file, damage.what));
      }
    }
  }
  std::cout << damages / stride << " damages, " << operations_ << " operations\n";
}

INSTANTIATE_TEST_SUITE_P(Samples, DamagedFiles, testing::ValuesIn(samples),
                         [](const auto& sample) { return std::string(sample.param.name); });

}  // namespace
