#include "fio/np_fio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/ChildProcess.h"
#include "support/FileCalls.h"
#include "support/OpenedFile.h"
#include "support/TemporaryDirectory.h"
#include "support/ThisProcess.h"
#include "support/ThisSystem.h"

namespace {

std::string randomText(std::mt19937& random, std::size_t size) {
  std::minstd_rand fast(random());
  std::string text(size, '\0');
  for (char& character : text) {
    character = static_cast<char>(fast() >> 8U);
  }
  return text;
}

/// A file beside the simplest thing that it should behave like; each operation is done on both.
class FileWithModel {
 public:
  FileWithModel(std::string path, unsigned seed) : path_(std::move(path)), random_(seed) {
    std::ofstream(path_).flush();
    file_ = opened(path_, npFioOnlyWriter);
  }

  void doSomething() {
    using Operation = void (FileWithModel::*)();
    constexpr std::array<Operation, 14> operations = {
        &FileWithModel::read,      &FileWithModel::read,      &FileWithModel::read,
        &FileWithModel::writeSome, &FileWithModel::writeSome, &FileWithModel::peek,
        &FileWithModel::peek,      &FileWithModel::seek,      &FileWithModel::seek,
        &FileWithModel::seek,      &FileWithModel::reserve,   &FileWithModel::flush,
        &FileWithModel::truncate,  &FileWithModel::reopen};
    (this->*operations[random_() % operations.size()])();
  }

  void write(std::size_t size) {
    const std::string text = randomText(random_, size);
    ASSERT_EQ(putText(file_.get(), text), static_cast<int>(text.size()));
    writeToModel(text);
  }

  void flush() { ASSERT_EQ(np_fio_bufmode(file_.get(), 0), npFioSuccess); }

  void reopen() {
    file_.reset();
    ASSERT_TRUE(TemporaryDirectory::read(path_) == content_);
    file_ = opened(path_, npFioOnlyWriter);
    position_ = 0;
  }

 private:
  std::size_t someSize(std::size_t most) {
    constexpr std::array<std::size_t, 8> sizes = {1, 50, 50, 1000, 1000, 5000, 40'000, 400'000};
    return 1 + random_() % std::min(most, sizes[random_() % sizes.size()]);
  }

  void writeSome() { write(someSize(400'000)); }

  void read() {
    const std::size_t size = someSize(400'000);
    const std::string expected =
        position_ < content_.size() ? content_.substr(position_, size) : std::string();
    ASSERT_TRUE(readText(file_.get(), size) == expected);
    position_ += expected.size();
  }

  void peek() {
    const std::size_t size = someSize(65'536);
    const unsigned char* const found = np_fio_peek(file_.get(), static_cast<int>(size));
    ASSERT_EQ(found != nullptr, position_ + size <= content_.size());
    if (found != nullptr) {
      ASSERT_EQ(std::memcmp(found, content_.data() + position_, size), 0);
      const std::size_t consumed = random_() % (size + 1);
      np_fio_consume(file_.get(), static_cast<int>(consumed));
      position_ += consumed;
    }
  }

  void reserve() {
    std::string text = randomText(random_, someSize(65'536));
    unsigned char* const room = np_fio_reserve(file_.get(), static_cast<int>(text.size()));
    ASSERT_NE(room, nullptr);
    std::copy(text.begin(), text.end(), room);
    text.resize(random_() % (text.size() + 1));
    np_fio_commit(file_.get(), static_cast<int>(text.size()));
    writeToModel(text);
  }

  void writeToModel(const std::string& text) {
    if (!text.empty()) {
      content_.resize(std::max(content_.size(), position_ + text.size()));
      content_.replace(position_, text.size(), text);
      position_ += text.size();
    }
  }

  void seek() {
    constexpr std::array<int, 3> whences = {npFioFromStart, npFioFromHere, npFioFromEnd};
    const std::size_t choice = random_() % whences.size();
    const int whence = whences[choice];
    const std::size_t base = std::array{std::size_t{0}, position_, content_.size()}[choice];
    auto offset = static_cast<std::int64_t>(someSize(400'000));
    offset = random_() % 2 == 0 || whence == npFioFromStart ? offset : -offset;
    const std::int64_t target = static_cast<std::int64_t>(base) + offset;
    ASSERT_EQ(np_fio_seek64(file_.get(), offset, whence), target < 0 ? -1 : target);
    position_ = target < 0 ? position_ : static_cast<std::size_t>(target);
  }

  void truncate() {
    ASSERT_EQ(np_fio_trunc(file_.get()), npFioSuccess);
    content_.resize(position_);
  }

  std::string path_;
  std::mt19937 random_;
  File file_;
  std::string content_;
  std::size_t position_ = 0;
};

TEST(FileBuffer, BehavesLikeBytesInMemory) {
  const TemporaryDirectory directory;
  for (const unsigned seed : {1U, 2U, 3U}) {
    SCOPED_TRACE(seed);
    FileWithModel file(directory.file("model"), seed);
    for (int step = 0; step < 2000 && !testing::Test::HasFatalFailure(); ++step) {
      SCOPED_TRACE(step);
      file.doSomething();
    }
    file.reopen();
  }
}

/// Space is looked for a mebibyte at a time, and a large piece goes past the buffer and that space.
TEST(FileBuffer, TakesOnePieceBehindTheOther) {
  const TemporaryDirectory directory(memoryDirectory());  // where none is reserved ahead
  FileWithModel file(directory.file("model"), 4);
  for (const std::size_t pieces : {1000U, 200U}) {
    for (std::size_t i = 0; i < pieces && !testing::Test::HasFatalFailure(); ++i) {
      file.write(1000);
    }
    file.flush();
    file.write(300'000);
  }
  file.reopen();
}

/// What `action` reads.
ReadCount countedIn(const std::function<void()>& action) {
  const ReadCount before = countReads();
  const ReadCount counting = countReads();  // which may read too
  action();
  const ReadCount after = countReads();
  return {after.calls + before.calls - 2 * counting.calls,
          after.bytes + before.bytes - 2 * counting.bytes};
}

class Refills : public testing::Test {
 protected:
  static constexpr std::int64_t fileSize = std::int64_t{8} * 1024 * 1024;
  static constexpr std::int64_t rowSize = 128;

  void SetUp() override {
    if (countReads().calls < 0) {
      GTEST_SKIP() << "the system does not count reads";
    }
    std::mt19937 random(1);
    content_ = randomText(random, fileSize);
    file_ = opened(directory_.write("rows", content_), npFioRead);
  }

  void readRow(std::int64_t row) {
    ASSERT_EQ(np_fio_seek64(file_.get(), row * rowSize, npFioFromStart), row * rowSize);
    ASSERT_EQ(readText(file_.get(), rowSize),
              content_.substr(static_cast<std::size_t>(row * rowSize), rowSize));
  }

  TemporaryDirectory directory_;
  std::string content_;
  File file_;
};

TEST_F(Refills, AreFewWhenRowsAreReadBackwards) {
  const std::int64_t calls = countedIn([&] {
                               for (std::int64_t row = fileSize / rowSize; row-- > 0;) {
                                 readRow(row);
                               }
                             }).calls;
  EXPECT_LT(calls, fileSize / 65'536);
}

TEST_F(Refills, AreFewWhenLongTextsAreReadBackwards) {
  constexpr int size = 40'000;
  const std::int64_t bytes =
      countedIn([&] {
        for (std::int64_t offset = fileSize - size; offset >= 0; offset -= size) {
          ASSERT_EQ(np_fio_seek64(file_.get(), offset, npFioFromStart), offset);
          ASSERT_EQ(readText(file_.get(), 1).size(), 1U);
          ASSERT_NE(np_fio_peek(file_.get(), size - 1), nullptr);
        }
      }).bytes;
  EXPECT_LT(bytes, 2 * fileSize);
}

TEST_F(Refills, AreSmallWhenRowsAreReadAtRandom) {
  constexpr std::int64_t rows = 200;
  const std::int64_t bytes =
      countedIn([&] {
        std::mt19937 random(1);
        for (int count = 0; count < rows; ++count) {
          readRow(static_cast<std::int64_t>(random()) % (fileSize / rowSize));
        }
      }).bytes;
  EXPECT_LT(bytes, rows * 16 * 1024);
}

TEST_F(Refills, AreNotNeededForALookAtTheEndAndBack) {
  readRow(0);
  const std::int64_t calls = countedIn([&] {
                               EXPECT_EQ(np_fio_seek64(file_.get(), 0, npFioFromEnd), fileSize);
                               readRow(1);
                             }).calls;
  EXPECT_EQ(calls, 0);
}

TEST_F(Refills, TakeASmallFileAtOnce) {
  const File small = opened(directory_.write("small", "0123456789"), npFioRead);
  const ReadCount reads = countedIn([&] { EXPECT_EQ(readText(small.get(), 10), "0123456789"); });
  EXPECT_EQ(reads.calls, 1);
}

TEST_F(Refills, ShowTheLargestPeekWhileGoingBackwards) {
  constexpr int size = 64 * 1024;
  for (std::int64_t offset = fileSize - size; offset >= 0; offset -= 50'001) {
    ASSERT_EQ(np_fio_seek64(file_.get(), offset, npFioFromStart), offset);
    const unsigned char* const found = np_fio_peek(file_.get(), size);
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(std::memcmp(found, content_.data() + offset, size), 0);
  }
}

TEST(FullDisk, KeepsWhatItRefusesUntilThereIsRoom) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("full", "");
  std::mt19937 random(1);
  const std::string text = randomText(random, 3000);
  File file = opened(path, npFioReadWrite);
  EXPECT_EQ(putText(file.get(), text), 3000);
  {
    const SizeLimit limit(1000);
    EXPECT_EQ(np_fio_bufmode(file.get(), 0), npFioDiskFull);
    EXPECT_EQ(TemporaryDirectory::read(path), text.substr(0, 1000));
    EXPECT_EQ(putText(file.get(), "x"), 0);
    EXPECT_EQ(np_fio_reserve(file.get(), 1), nullptr);
    EXPECT_EQ(readText(file.get(), 1), "");
    EXPECT_EQ(np_fio_seek64(file.get(), 0, npFioFromStart), -1);
    EXPECT_EQ(np_fio_seek64(file.get(), 0, npFioFromHere), -1);
    EXPECT_EQ(np_fio_trunc(file.get()), npFioDiskFull);
    EXPECT_EQ(np_fio_status(file.get()), npFioDiskFull);
  }
  EXPECT_EQ(putText(file.get(), "end"), 3);
  EXPECT_EQ(np_fio_status(file.get()), npFioSuccess);
  EXPECT_EQ(np_fio_close(file.release()), npFioSuccess);
  EXPECT_EQ(TemporaryDirectory::read(path), text + "end");
}

TEST(FullDisk, IsToldByLargeWritesTruncationsAndTheClose) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("full", "");
  const std::string large(500'000, 'x');
  File file = opened(path, npFioReadWrite);
  const SizeLimit limit(400'000);
  EXPECT_EQ(putText(file.get(), large), 400'000);
  EXPECT_EQ(np_fio_status(file.get()), npFioDiskFull);
  EXPECT_EQ(np_fio_seek64(file.get(), 0, npFioFromHere), 400'000);
  EXPECT_EQ(np_fio_seek64(file.get(), 400'001, npFioFromStart), 400'001);
  EXPECT_EQ(np_fio_trunc(file.get()), npFioDiskFull);
  EXPECT_EQ(np_fio_seek64(file.get(), 399'999, npFioFromStart), 399'999);
  EXPECT_EQ(putText(file.get(), "y"), 1);
  const SizeLimit lower(399'000);
  // On Windows what a file has room for is never refused.
  EXPECT_EQ(np_fio_close(file.release()), isWindows ? npFioSuccess : npFioDiskFull);
}

TEST(FullDisk, IsMetBeforeTheBufferAcceptsWhatDoesNotFit) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("full", "");
  File file = opened(path, npFioOnlyWriter);
  const SizeLimit limit(200'000);
  EXPECT_EQ(np_fio_assure(file.get(), 200'000), npFioSuccess);
  EXPECT_EQ(np_fio_assure(file.get(), 200'001), npFioDiskFull);
  std::size_t written = 0;
  while (putText(file.get(), "twelve bytes") == 12) {
    written += 12;
  }
  EXPECT_EQ(np_fio_status(file.get()), npFioDiskFull);
  EXPECT_EQ(written, 200'000 / 12 * 12);
  EXPECT_EQ(np_fio_cut(file.get(), static_cast<std::int64_t>(written)), npFioSuccess);
  EXPECT_EQ(np_fio_bufmode(file.get(), 0), npFioSuccess);
  EXPECT_EQ(np_fio_close(file.release()), npFioSuccess);
  EXPECT_EQ(TemporaryDirectory::read(path).size(), written);
}

/// Tells what came of it, and leaves the file open when it ends.
const ChildPart openingAsOnlyWriter("open as only writer", [](const Teller& teller,
                                                              const Words& words) {
  np_fio_handle file = nullptr;
  teller.tell(np_fio_open(words[0].c_str(), npFioOnlyWriter, &file));
});

TEST(OnlyWriter, ExcludesOtherOnlyWritersInAllProcesses) {
  const TemporaryDirectory directory;
  std::array<char, npFioPathSize> path;
  np_fio_handle made = nullptr;
  ASSERT_EQ(np_fio_tmpfile(directory.path().c_str(), "t_", path.data(), npFioPathSize, &made), 0);
  const std::string name = path.data();
  EXPECT_EQ(openStatus(name, npFioOnlyWriter), npFioInUse);
  const auto statusInChild = [&name] {
    ChildProcess child("open as only writer", {name});
    return child.next().value_or(Note{.stage = Teller::failed}).stage;
  };
  EXPECT_EQ(statusInChild(), npFioInUse);
  EXPECT_EQ(openStatus(name, npFioReadWrite), npFioSuccess);
  EXPECT_EQ(openStatus(name, npFioRead), npFioSuccess);
  np_fio_close(made);
  EXPECT_EQ(statusInChild(), npFioSuccess);
  EXPECT_EQ(openStatus(name, npFioOnlyWriter), npFioSuccess);
}

TEST(OpenFile, RefusesWritesWhenOpenedForReadingAndAllWithoutAHandle) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("file", "text");
  for (const bool isNull : {false, true}) {
    const File file = isNull ? nullptr : opened(path, npFioRead);
    EXPECT_EQ(putText(file.get(), "x"), 0);
    EXPECT_EQ(np_fio_reserve(file.get(), 1), nullptr);
    EXPECT_EQ(np_fio_trunc(file.get()), npFioBadArgument);
    EXPECT_EQ(np_fio_status(file.get()), npFioBadArgument);
    EXPECT_EQ(readText(file.get(), 9), isNull ? "" : "text");
    EXPECT_EQ(np_fio_seek64(file.get(), INT64_MAX, npFioFromHere), -1);
    EXPECT_EQ(np_fio_seek64(file.get(), INT64_MIN, npFioFromEnd), -1);
    EXPECT_EQ(np_fio_seek64(file.get(), 0, 3), -1);
    EXPECT_EQ(np_fio_seek64(file.get(), 0, npFioFromHere), isNull ? -1 : 4);
  }
}

TEST(TemporaryFile, HasARandomName) {
  const TemporaryDirectory directory;
  std::array<char, npFioPathSize> path;
  np_fio_handle file = nullptr;
  ASSERT_EQ(np_fio_tmpfile(directory.path().c_str(), "zv_", path.data(), npFioPathSize, &file), 0);
  np_fio_stat info;
  EXPECT_EQ(putText(file, "abc"), 3);
  EXPECT_EQ(np_fio_close(file), npFioSuccess);
  ASSERT_EQ(np_fio_stat64(path.data(), &info), npFioSuccess);
  EXPECT_TRUE(info.isRegular && info.size == 3 && info.modifiedTime > 0);
  const std::string name = directory.names().at(0);
  EXPECT_EQ(path.data(), directory.file(name));
  EXPECT_TRUE(name.size() == 19 && name.substr(0, 3) == "zv_") << name;
  EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789", 3), std::string::npos);
  EXPECT_EQ(np_fio_unlink(path.data()), npFioSuccess);
  EXPECT_EQ(np_fio_stat64(path.data(), &info), npFioNotFound);
  EXPECT_EQ(np_fio_unlink(path.data()), npFioNotFound);
}

TEST(TemporaryFile, IsNotMadeWhenItCannotBeNamed) {
  const TemporaryDirectory directory;
  const std::string parent = directory.path();
  std::array<char, npFioPathSize> path;
  np_fio_handle file = nullptr;
  const auto make = [&](const std::string& where, const std::string& prefix, std::size_t size) {
    return np_fio_tmpfile(where.c_str(), prefix.c_str(), path.data(), static_cast<int>(size),
                          &file);
  };
  const std::size_t needed = parent.size() + 1 + 2 + 16 + 1;
  EXPECT_EQ(make(parent, "t_", needed - 1), npFioPathTooLong);
  EXPECT_EQ(make(parent, "../", path.size()), npFioNotPlainName);
  EXPECT_EQ(make(parent, std::string(300, 'p'), path.size()), npFioPathTooLong);
  EXPECT_EQ(make(parent + "/none", "t_", path.size()), npFioNotFound);
  EXPECT_EQ(file, nullptr);
  EXPECT_TRUE(directory.names().empty());
  EXPECT_EQ(make(parent, "t_", needed), npFioSuccess);
  np_fio_close(file);
}

/// Whoever reclaims the files of killed processes removes what nobody has locked.
TEST(TemporaryFile, IsNeverTakenForOneThatNobodyHas) {
  const TemporaryDirectory directory;
  const std::jthread reclaimer([&directory](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      for (const std::string& name : directory.names()) {
        np_fio_handle file = nullptr;
        if (np_fio_open(directory.file(name).c_str(), npFioOnlyWriter, &file) == npFioSuccess) {
          (void)np_fio_unlink(directory.file(name).c_str());
          np_fio_close(file);
        }
      }
    }
  });
  std::array<char, npFioPathSize> path;
  for (int i = 0; i < 3'000; ++i) {
    np_fio_handle file = nullptr;
    ASSERT_EQ(np_fio_tmpfile(directory.path().c_str(), "t_", path.data(), npFioPathSize, &file), 0);
    ASSERT_EQ(np_fio_unlink(path.data()), npFioSuccess) << i;
    np_fio_close(file);
  }
}

TEST(Directory, IsListedWithWhatTheSystemKnowsOfItsFiles) {
  const TemporaryDirectory directory;
  std::vector<std::string> names;
  const auto list = [&names](const std::string& path, std::size_t most) {
    struct Context {
      std::vector<std::string>* names;
      std::size_t most;
    } context{&names, most};
    names.clear();
    const auto take = [](const char* name, void* to) {
      auto* const found = static_cast<Context*>(to);
      found->names->emplace_back(name);
      return found->names->size() < found->most;
    };
    return np_fio_list(path.c_str(), take, &context);
  };
  const std::string first = directory.write("a", "1");
  std::filesystem::create_directory(directory.file("b"));
  EXPECT_EQ(list(directory.path(), 100), npFioSuccess);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{".", "..", "a", "b"}));
  EXPECT_EQ(list(directory.path(), 2), npFioSuccess);
  EXPECT_EQ(names.size(), 2U);
  EXPECT_EQ(list("", 100), npFioSuccess);
  EXPECT_EQ(list(directory.file("none"), 100), npFioNotFound);
  EXPECT_EQ(list(first, 100), runsUnderWine() ? npFioNotPlainName : npFioNotFound);

  np_fio_stat before;
  std::int64_t made = 0;
  ASSERT_EQ(np_fio_stat64(first.c_str(), &before), npFioSuccess);
  ASSERT_EQ(np_fio_madeTime(first.c_str(), &made), npFioSuccess);
  EXPECT_LE(made, before.modifiedTime);
  std::filesystem::last_write_time(
      first, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  std::int64_t madeStill = 0;
  EXPECT_EQ(np_fio_madeTime(first.c_str(), &madeStill), npFioSuccess);
  EXPECT_TRUE(made == madeStill || runsUnderWine());  // which keeps no such times
  EXPECT_EQ(np_fio_madeTime(directory.file("none").c_str(), &made), npFioNotFound);
}

TEST(Paths, Split) {
  struct Case {
    const char* path;
    const char* directory;
    const char* name;
  };
  std::array<char, 12> directory;
  std::array<char, 12> name;
  for (const Case& split : {Case{"/tmp/x", "/tmp", "x"}, Case{"/x", "/", "x"}, Case{"x", "", "x"},
                            Case{"a//b", "a", "b"}, Case{"a/", "a", ""}, Case{"//", "/", ""}}) {
    ASSERT_EQ(np_fio_pparse(split.path, directory.data(), 12, name.data(), 12), npFioSuccess);
    EXPECT_STREQ(directory.data(), split.directory);
    EXPECT_STREQ(name.data(), split.name);
  }
  EXPECT_EQ(np_fio_pparse("dir/name", directory.data(), 3, name.data(), 12), npFioPathTooLong);
  EXPECT_EQ(np_fio_pparse("dir/name", directory.data(), 12, name.data(), 4), npFioPathTooLong);
}

TEST(Paths, NeverLeadOutOfTheirDirectory) {
  std::array<char, npFioPathSize> path;
  const auto status = [&](const char* name) {
    return np_fio_pcat("d", name, path.data(), npFioPathSize);
  };
  for (const char* name : {"", ".", "..", "a/b", "/", "a\\b", "c:x", "a.", "a ", "a\nb", "nul",
                           "Con.txt", "aux .x", "LPT9", "com1.", "com\xC2\xB2", "CONOUT$"}) {
    EXPECT_EQ(status(name), npFioNotPlainName) << name;
  }
  for (const char* name :
       {"...a", ".x", "com", "com0", "com10", "console", "lpt1x", "\xC3\xA4 b"}) {
    EXPECT_EQ(status(name), npFioSuccess) << name;
  }
}

}  // namespace
