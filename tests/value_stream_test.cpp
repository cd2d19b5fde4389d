/// Values written and read in place in a file's buffer: just what writing and reading them one by
/// one does, with whole, short and damaged bytes and across the ends of the buffer.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "fio/np_fio.h"
#include "support/TemporaryDirectory.h"
#include "wtelem/ValueStream.h"

namespace {

using valueCodec::Result;

constexpr int valueCount = 30000;

class ValueStream : public testing::TestWithParam<bool> {
 protected:
  /// A file of its own with a handle.
  struct File {
    explicit File(const TemporaryDirectory& directory) {
      EXPECT_EQ(0, np_fio_tmpfile(directory.path().c_str(), "stream_", path, sizeof path, &handle));
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { np_fio_close(handle); }

    std::string content() {
      std::string all(static_cast<std::size_t>(np_fio_seek64(handle, 0, npFioFromEnd)), '\0');
      EXPECT_EQ(0, np_fio_seek64(handle, 0, npFioFromStart));
      EXPECT_EQ(static_cast<int>(all.size()),
                np_fio_getb(handle, all.data(), static_cast<int>(all.size())));
      return all;
    }
    void put(const std::string& all) {
      EXPECT_EQ(0, np_fio_seek64(handle, 0, npFioFromStart));
      EXPECT_EQ(static_cast<int>(all.size()),
                np_fio_putb(handle, all.data(), static_cast<int>(all.size())));
      EXPECT_EQ(0, np_fio_trunc(handle));
      EXPECT_EQ(0, np_fio_seek64(handle, 0, npFioFromStart));
    }

    char path[npFioPathSize];
    np_fio_handle handle = nullptr;
  };

  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

  std::string randomText() {
    const int size = below(50) == 0 ? below(70000) : below(3) == 0 ? below(200) : below(60);
    std::string text(static_cast<std::size_t>(size), '\0');
    for (char& byte : text) {
      byte = static_cast<char>(' ' + below(90));
    }
    return text;
  }

  void assignRandom(ZvbDatavar* value) {
    switch (below(7)) {
      case 0:
        return value->assign(below(2) == 0);
      case 1:
        return value->assign(std::int64_t{below(1000)} << below(50));
      case 2:
        return value->assign(
            (std::to_string(below(100000)) + "." + std::to_string(below(100))).c_str());
      case 3:
        value->assign(below(20000) + 0.5);
        static_cast<void>(value->setType(below(2) == 0 ? zvbTypeDate : zvbTypeReal));
        return;
      case 4:
        return value->setNull();
      default:
        return value->assign(randomText().c_str());
    }
  }

  std::vector<ColumnDefinition> randomColumns() {
    std::vector<ColumnDefinition> columns(64);
    for (ColumnDefinition& column : columns) {
      column.storageCode = static_cast<StorageCode>(below(6));
      column.width = below(4) == 0 ? below(80) : 0;
    }
    return columns;
  }

  /// Both read or pass over the same values until one of them fails, and agree in everything.
  void readBoth(File& file, File& twin) {
    valueCodec::Source source{.file = file.handle, .swap = GetParam(), .buffer = &buffer_};
    valueCodec::Source twinSource{.file = twin.handle, .swap = GetParam(), .buffer = &buffer_};
    ZvbDatavar value;
    ZvbDatavar twinValue;
    std::int64_t offset = 0;
    std::int64_t twinOffset = 0;
    for (Result result = Result::done; result == Result::done;) {
      ValueReader reader(source, &offset);
      for (int left = below(20); left >= 0 && result == Result::done; --left) {
        const bool passes = below(3) == 0;
        result = passes ? reader.pass(1) : reader.read(&value);
        ASSERT_EQ(valueCodec::decodeValue(twinSource, passes ? nullptr : &twinValue, &twinOffset),
                  result);
        ASSERT_STREQ(twinValue.asString().asCstr(), value.asString().asCstr());
        ASSERT_EQ(twinValue.isNull(), value.isNull());
        ASSERT_EQ(twinValue.type(), value.type());
      }
      if (result == Result::done) {
        reader.finish();
      }
      ASSERT_EQ(twinOffset, offset);
      ASSERT_EQ(np_fio_seek64(twin.handle, 0, npFioFromHere),
                np_fio_seek64(file.handle, 0, npFioFromHere));
    }
  }

  TemporaryDirectory directory_;
  std::mt19937 random_{GetParam() ? 1U : 2U};
  StringReadBuffer buffer_;
};

TEST_P(ValueStream, IsTheSameAsValueByValue) {
  buffer_.setLimit(60000);
  File file(directory_);
  File twin(directory_);
  std::vector<ColumnDefinition> columns = randomColumns();
  std::vector<ColumnDefinition> twinColumns(columns.size());
  std::int64_t offset = 0;
  std::int64_t twinOffset = 0;
  ZvbDatavar value;
  for (int written = 0; written < valueCount;) {
    ValueWriter writer(file.handle, &offset);
    for (std::size_t i = 0; i < columns.size(); ++i, ++written) {
      assignRandom(&value);
      twinColumns[i].storageCode = columns[i].storageCode;
      twinColumns[i].width = columns[i].width;
      ASSERT_EQ(Result::done, writer.write(&columns[i], value));
      ASSERT_EQ(Result::done,
                valueCodec::encodeValue(&twinColumns[i], value, twin.handle, &twinOffset));
      ASSERT_EQ(twinColumns[i].maxLength, columns[i].maxLength);
    }
    writer.finish();
    ASSERT_EQ(twinOffset, offset);
  }
  const std::string content = twin.content();
  ASSERT_GT(content.size(), 1000000U);  // several times the buffer
  ASSERT_TRUE(content == file.content());

  for (int round = 0; round < 40; ++round) {
    std::string damaged = content.substr(0, content.size() - static_cast<std::size_t>(round));
    for (int i = 0; i < round * round; ++i) {
      damaged[static_cast<std::size_t>(below(static_cast<int>(damaged.size())))] =
          static_cast<char>(below(256));
    }
    file.put(damaged);
    twin.put(damaged);
    readBoth(file, twin);
    ASSERT_FALSE(HasFatalFailure());
  }
}

INSTANTIATE_TEST_SUITE_P(ByteOrder, ValueStream, testing::Bool());

}  // namespace
