/// Disks that are full: a file system of one mebibyte, in memory and on a disk, and files that may
/// not grow. Every operation is tried with no block left, with one, with two, until it passes, so
/// that each of its writes meets the full disk once.

#include <gtest/gtest.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>

#include "support/FileCalls.h"
#include "support/OwnMounts.h"
#include "support/TableFixture.h"
#include "support/ThisProcess.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

using Lines = std::vector<std::string>;

/// What takes the space away and gives it back.
class Disk {
 public:
  Disk() = default;
  Disk(const Disk&) = delete;
  Disk& operator=(const Disk&) = delete;
  virtual ~Disk() = default;

  /// Leaves room for so many blocks.
  virtual void fill(int blocks) = 0;
  virtual void empty() = 0;
  [[nodiscard]] virtual std::int64_t freeBlocks() const { return 0; }
};

/// Files that may grow to so many blocks each.
class LimitedFiles final : public Disk {
 public:
  void fill(int blocks) override {
    constexpr std::int64_t block = 1024;
    limit_.emplace(static_cast<std::int64_t>(blocks) * block);
  }
  void empty() override { limit_.reset(); }

 private:
  std::optional<SizeLimit> limit_;
};

/// A file system that is mounted on a directory as long as this lives.
class MountedDisk final : public Disk {
 public:
  MountedDisk(const std::string& path, const std::string& device, const char* type,
              const char* options)
      : path_(path), fillers_{path + "/filler", path + "/rest"} {
    isMounted_ = mount(device.c_str(), path.c_str(), type, 0, options) == 0;
    std::filesystem::remove(path + "/lost+found");
  }
  ~MountedDisk() override {
    if (isMounted_) {
      umount2(path_.c_str(), MNT_DETACH);
    }
  }

  [[nodiscard]] bool isMounted() const { return isMounted_; }

  void fill(int blocks) override {
    for (const std::string& filler : fillers_) {
      const int file = open(filler.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
      for (std::int64_t step = freeBlocks(); step > 0; step /= 2) {
        while (fallocate(file, 0, sizeOf(filler), step * blockSize()) == 0) {
        }
      }
      close(file);
    }
    while (freeBlocks() < blocks && sizeOf(fillers_[0]) != 0) {
      ASSERT_EQ(0, truncate(fillers_[0].c_str(), sizeOf(fillers_[0]) - blockSize()));
    }
  }
  void empty() override {
    for (const std::string& filler : fillers_) {
      std::filesystem::remove(filler);
    }
  }
  [[nodiscard]] std::int64_t freeBlocks() const override {
    return static_cast<std::int64_t>(info().f_bavail);
  }

 private:
  [[nodiscard]] struct statvfs info() const {
    struct statvfs found;
    EXPECT_EQ(0, statvfs(path_.c_str(), &found));
    return found;
  }

  [[nodiscard]] off_t blockSize() const { return static_cast<off_t>(info().f_bsize); }
  static off_t sizeOf(const std::string& file) {
    std::error_code missing;
    const std::uintmax_t size = std::filesystem::file_size(file, missing);
    return missing ? 0 : static_cast<off_t>(size);
  }

  std::string path_;
  std::string fillers_[2];  // what describes the space of the first can take the last block but one
  bool isMounted_ = false;
};

using NewDisk = std::unique_ptr<Disk>;

NewDisk limitFiles(const std::string& /*path*/) { return std::make_unique<LimitedFiles>(); }

NewDisk mountDisk(const std::string& path, const std::string& device, const char* type,
                  const char* options) {
  auto disk = std::make_unique<MountedDisk>(path, device, type, options);
  return disk->isMounted() ? std::move(disk) : nullptr;
}

NewDisk mountMemory(const std::string& path) {
  return ownMounts::areThere() ? mountDisk(path, "none", "tmpfs", "size=1m") : nullptr;
}

/// A device whose blocks are those of a file, and which is gone when nobody uses it; or -1.
int attachDevice(int image) {
  const int control = open("/dev/loop-control", O_RDWR | O_CLOEXEC);
  int device = -1;
  for (int attempt = 0; control >= 0 && device < 0 && attempt < 20; ++attempt) {
    const std::string free = "/dev/loop" + std::to_string(ioctl(control, LOOP_CTL_GET_FREE));
    device = open(free.c_str(), O_RDWR | O_CLOEXEC);
    loop_config config{};
    config.fd = static_cast<std::uint32_t>(image);
    config.info.lo_flags = LO_FLAGS_AUTOCLEAR;
    if (device >= 0 && ioctl(device, LOOP_CONFIGURE, &config) != 0) {
      close(std::exchange(device, -1));  // another process has taken it meanwhile
    }
  }
  close(control);
  return device;
}

NewDisk mountExt4(const std::string& path) {
  if (!ownMounts::areThere()) {
    return nullptr;
  }
  const TemporaryDirectory directory;
  const std::string image = directory.write("image", std::string(1 << 20, '\0'));
  const std::string command =
      "PATH=$PATH:/sbin:/usr/sbin mkfs.ext4 -q -F -m 0 -O ^has_journal " + image + " 2>/dev/null";
  if (std::system(command.c_str()) != 0) {  // NOLINT(concurrency-mt-unsafe)
    return nullptr;
  }
  const int file = open(image.c_str(), O_RDWR | O_CLOEXEC);
  const int device = attachDevice(file);
  NewDisk disk = mountDisk(path, "/proc/self/fd/" + std::to_string(device), "ext4", "");
  close(device);
  close(file);
  return disk;
}

struct DiskKind {
  const char* name;
  NewDisk (*make)(const std::string& path);
};
const DiskKind inMemory = {"Memory", mountMemory};
const DiskKind ext4 = {"Ext4", mountExt4};
const DiskKind limitedFiles = {"LimitedFiles", limitFiles};

void PrintTo(const DiskKind& kind, std::ostream* out) { *out << kind.name; }
std::string nameOf(const testing::TestParamInfo<DiskKind>& kind) { return kind.param.name; }

std::string textOf(std::int64_t number) {
  return std::to_string(number) + std::string(60, static_cast<char>('a' + number % 26));
}

/// Rows as they are shown: those from 0 on to `count`.
Lines lines(std::size_t count) {
  Lines found;
  for (std::size_t i = 0; i < count; ++i) {
    const auto number = static_cast<std::int64_t>(i);
    found.push_back(std::to_string(number) + '|' + textOf(number));
  }
  return found;
}

Lines operator+(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class SmallDisk : public TableTest, public testing::WithParamInterface<DiskKind> {
 protected:
  static constexpr std::size_t otherRows = 20;
  static constexpr std::size_t targetRows = 50;
  static constexpr std::size_t sourceRows = 300;
  static constexpr std::int64_t elementSize = 9000;  // bytes

  void SetUp() override {
    ASSERT_TRUE(directories.split(directory.path().c_str(), ':'));
    disk = GetParam().make(directory.path());
    if (disk == nullptr) {
      GTEST_SKIP() << "no such disk here: it takes user namespaces or root, and mkfs.ext4";
    }
    other = makeRows(otherRows);
    source = makeRows(sourceRows);
    target = makeRows(targetRows);
    targetLines = lines(targetRows);
  }

  static std::vector<Column> columns() {
    return {{"number", zvbTypeInteger}, {"text", zvbTypeString}};
  }
  static bool writeNumber(ZvWorkTableFile& table, std::size_t number) {
    const auto value = static_cast<std::int64_t>(number);
    return write(table, row({value, textOf(value)}));
  }
  std::string makeRows(std::size_t count) {
    const TableHandle table = create(columns());
    for (std::size_t i = 0; i < count; ++i) {
      EXPECT_TRUE(writeNumber(*table, i));
    }
    EXPECT_TRUE(table->close());
    return table->getName().asCstr();
  }

  bool failWith(ZvWorkTableFile& table) {
    error = table.getErrorMessage();
    return false;
  }
  TableHandle createUnlessFull(int sortKeys, std::int64_t maxElementSize) {
    TableHandle table(manager->createTable(2, sortKeys, maxElementSize, &error));
    for (int i = 0; i < 2 && table != nullptr; ++i) {
      const Column column = columns()[static_cast<std::size_t>(i)];
      EXPECT_TRUE(table->defineColumn(i, column.name, column.type, 0));
    }
    return table;
  }

  // The operations. Each is true when it has done all, and false with the reason in `error`.

  /// A row that is refused costs no row that was accepted.
  bool writeRows(std::size_t rows, std::int64_t maxElementSize) {
    const TableHandle table = createUnlessFull(0, maxElementSize);
    if (table == nullptr) {
      return false;
    }
    std::size_t accepted = 0;
    while (accepted < rows && writeNumber(*table, accepted)) {
      ++accepted;
    }
    const ZvbString refusal = table->getErrorMessage();
    const bool closed = table->close();
    if (!closed) {
      EXPECT_EQ(0U, accepted) << table->getErrorMessage().asCstr();
      return failWith(*table);
    }
    EXPECT_EQ(static_cast<std::int64_t>(accepted), table->getRowCount());
    EXPECT_EQ(lines(accepted), readTable(table->getName().asCstr()));
    ZvwtTableSizes sizes;
    EXPECT_TRUE(zvwtGetTableSizes(manager.get(), table->getName(), &sizes, &error));
    EXPECT_EQ(static_cast<std::int64_t>(accepted) * 8, sizes.indexBytes);
    error = refusal;
    return accepted == rows && keep(table->getName());
  }
  /// A catalogue of many blocks and nothing else.
  bool define() {
    constexpr int count = 300;
    const TableHandle table(manager->createTable(count, 0, &error));
    for (int i = 0; i < count && table != nullptr; ++i) {
      const std::string name = textOf(i);
      EXPECT_TRUE(table->defineColumn(i, name.c_str(), zvbTypeInteger, 0));
    }
    if (table == nullptr) {
      return false;
    }
    return table->close() ? keep(table->getName()) : failWith(*table);
  }
  bool fillOne() { return writeRows(sourceRows, 0); }
  bool fillMany() { return writeRows(sourceRows, elementSize); }

  bool append() {
    const bool appended = manager->appendTable(target.c_str(), source.c_str(), &error);
    const Lines found = readTable(target);
    EXPECT_GE(found.size(), targetLines.size());
    const std::size_t added = found.size() - std::min(found.size(), targetLines.size());
    EXPECT_EQ(targetLines + lines(added), found);
    EXPECT_TRUE(added == sourceRows || !appended);
    targetLines = found;
    return appended;
  }

  bool copy() {
    const TableHandle table(manager->copyTable(elementSize, "", source.c_str(), &error));
    if (table == nullptr) {
      return false;
    }
    if (!table->close()) {
      return failWith(*table);
    }
    EXPECT_EQ(lines(sourceRows), readTable(table->getName().asCstr()));
    return keep(table->getName());
  }

  bool copyInto() {
    const TableHandle table = createUnlessFull(0, 0);
    if (table == nullptr ||
        !manager->copyIntoTable(table.get(), manager.get(), source.c_str(), &error)) {
      return false;
    }
    EXPECT_EQ(lines(sourceRows), readAll(*table));
    return keep(table->getName());
  }

  /// Of rows that come backwards, in work files of which some are merged.
  bool sort() {
    constexpr std::size_t rows = 1200;
    const TableHandle table = createUnlessFull(1, 0);
    if (table == nullptr) {
      return false;
    }
    EXPECT_EQ(0, table->setSortColumn(0, 0, false, 0));
    EXPECT_EQ(0, table->setSortOptionA(65536));
    for (std::size_t i = rows; i > 0; --i) {
      if (!writeNumber(*table, i - 1)) {
        return failWith(*table);
      }
    }
    if (!table->close()) {
      return failWith(*table);
    }
    EXPECT_EQ(lines(rows), readTable(table->getName().asCstr()));
    return keep(table->getName());
  }

  bool keep(const ZvbString& name) {
    made = name.asCstr();
    return true;
  }

  /// Deletes what the operation has made, and makes the target as it was.
  void startAnew() {
    if (!made.empty()) {
      EXPECT_TRUE(manager->deleteTable(made.c_str(), &error)) << error.asCstr();
      made.clear();
    }
    if (targetLines.size() != targetRows) {
      EXPECT_TRUE(manager->deleteTable(target.c_str(), &error)) << error.asCstr();
      target = makeRows(targetRows);
      targetLines = lines(targetRows);
    }
  }

  void expectOthersIntact() {
    EXPECT_EQ(lines(otherRows), readTable(other));
    EXPECT_EQ(lines(sourceRows), readTable(source));
    EXPECT_EQ(targetLines, readTable(target));
  }

  /// No file has space that it does not need; on some file systems a block describes the others.
  void expectNoSpareSpace() {
    for (const std::string& name : directory.names()) {
      struct stat found;
      ASSERT_EQ(0, stat(directory.file(name).c_str(), &found));
      EXPECT_LE(found.st_blocks * 512, found.st_size + 2 * 4096) << name;
    }
  }

  void sweep(const std::function<bool()>& operation) {
    const std::size_t files = openFiles().size();
    bool passed = false;
    int blocks = 0;
    for (; !passed && !HasFailure(); ++blocks) {
      SCOPED_TRACE(std::to_string(blocks) + " blocks left");
      ASSERT_LT(blocks, 2000);
      const std::int64_t freeBefore = disk->freeBlocks();
      error.setNull();
      disk->fill(blocks);
      const std::size_t namesBefore = directory.names().size();
      passed = operation();
      if (!passed) {
        EXPECT_NE(nullptr, std::strstr(error.asCstr(), "full")) << error.asCstr();
        EXPECT_EQ(namesBefore, directory.names().size());
      }
      expectOthersIntact();
      disk->empty();
      EXPECT_TRUE(passed || operation()) << error.asCstr();
      expectOthersIntact();
      expectNoSpareSpace();
      // What is reserved takes little more than what is needed, a sort its work files besides.
      const std::int64_t used = freeBefore - disk->freeBlocks();
      EXPECT_TRUE(freeBefore == 0 || !passed || blocks <= 2 * used + 8) << used;
      EXPECT_EQ(files, openFiles().size());
      startAnew();
      EXPECT_EQ(freeBefore, disk->freeBlocks());
    }
    RecordProperty("met", blocks - 1);
  }

  TempDirectories directories;
  NewDisk disk;
  std::string other;
  std::string source;
  std::string target;
  Lines targetLines;
  std::string made;  // the name of the table that the last operation has made
};

TEST_P(SmallDisk, IsMetByDefinitions) {
  sweep([this] { return define(); });
}
TEST_P(SmallDisk, IsMetByRowsOfOneElement) {
  sweep([this] { return fillOne(); });
}
TEST_P(SmallDisk, IsMetByRowsOfManyElements) {
  sweep([this] { return fillMany(); });
}
TEST_P(SmallDisk, IsMetByAppends) {
  sweep([this] { return append(); });
}
TEST_P(SmallDisk, IsMetByCopies) {
  sweep([this] { return copy(); });
}
TEST_P(SmallDisk, IsMetByCopiesIntoATable) {
  sweep([this] { return copyInto(); });
}
TEST_P(SmallDisk, IsMetBySorts) {
  sweep([this] { return sort(); });
}

class SharedDisk : public SmallDisk {};

/// The space of rows that were accepted cannot be taken by others before the close.
TEST_P(SharedDisk, KeepsWhatItHasAcceptedWhenOthersFillIt) {
  for (const std::int64_t maxElementSize : {std::int64_t{0}, elementSize}) {
    for (const std::size_t rows : {1U, 2U, 70U, 130U, 1500U}) {
      SCOPED_TRACE(rows);
      const TableHandle table = create(columns(), maxElementSize);
      ZVWTFileImpl appended(directories, nullptr);
      ASSERT_TRUE(appended.open(target.c_str(), false, nullptr, false));
      for (std::size_t i = 0; i < rows; ++i) {
        ASSERT_TRUE(writeNumber(*table, i) && writeNumber(appended, i));
      }
      disk->fill(0);
      EXPECT_TRUE(table->close()) << table->getErrorMessage().asCstr();
      EXPECT_TRUE(appended.close()) << appended.getErrorMessage().asCstr();
      EXPECT_EQ(lines(rows), readTable(table->getName().asCstr()));
      targetLines = targetLines + lines(rows);
      expectOthersIntact();
      disk->empty();
      keep(table->getName());
      startAnew();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, SmallDisk, testing::Values(inMemory, ext4, limitedFiles), nameOf);
INSTANTIATE_TEST_SUITE_P(Of, SharedDisk, testing::Values(inMemory, ext4), nameOf);

}  // namespace

int main(int argc, char** argv) {
  int exitCode = 0;
  if (!ownMounts::areThere() && ownMounts::runAgain(argv, &exitCode)) {
    return exitCode;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
