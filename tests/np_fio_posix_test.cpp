/// What the file layer makes of what only POSIX systems have.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string>

#include "fio/np_fio.h"
#include "support/EnvironmentVariable.h"
#include "support/OpenedFile.h"
#include "support/TemporaryDirectory.h"

namespace {

TEST(OnlyWriter, LeavesNoReservedSpaceBehind) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("large", "");
  File file = opened(path, npFioOnlyWriter);
  const std::string piece(100'000, 'x');
  for (int i = 0; i < 15; ++i) {
    EXPECT_EQ(putText(file.get(), piece), 100'000);
  }
  EXPECT_EQ(np_fio_close(file.release()), npFioSuccess);
  struct stat found;
  ASSERT_EQ(stat(path.c_str(), &found), 0);
  EXPECT_EQ(found.st_size, 1'500'000);
  EXPECT_LT(found.st_blocks * 512, 1'600'000);
}

TEST(OpenFile, TakesRegularFilesOnly) {
  const TemporaryDirectory directory;
  const std::string file = directory.write("file", "x");
  ASSERT_EQ(symlink(file.c_str(), directory.file("link").c_str()), 0);
  ASSERT_EQ(mkfifo(directory.file("pipe").c_str(), 0600), 0);
  for (const int mode : {npFioRead, npFioReadWrite, npFioOnlyWriter}) {
    EXPECT_EQ(openStatus(directory.path(), mode), npFioNotRegular);
    EXPECT_EQ(openStatus(directory.file("link"), mode), npFioNotRegular);
    EXPECT_EQ(openStatus(directory.file("pipe"), mode), npFioNotRegular);
    EXPECT_EQ(openStatus("/dev/null", mode), npFioNotRegular);
    EXPECT_EQ(openStatus(directory.file("none"), mode), npFioNotFound);
    EXPECT_EQ(openStatus(file + "/below", mode), npFioNotFound);
    EXPECT_EQ(openStatus(directory.file(std::string(256, 'n')), mode), npFioPathTooLong);
  }
  EXPECT_EQ(openStatus(file, 0), npFioBadArgument);
  EXPECT_EQ(openStatus(file, 4), npFioBadArgument);
}

TEST(NewFile, BelongsToTheUserAlone) {
  const TemporaryDirectory directory;
  std::array<char, npFioPathSize> path;
  np_fio_handle file = nullptr;
  ASSERT_EQ(np_fio_tmpfile(directory.path().c_str(), "t_", path.data(), npFioPathSize, &file), 0);
  np_fio_close(file);
  struct stat found;
  np_fio_stat info;
  ASSERT_EQ(stat(path.data(), &found), 0);
  ASSERT_EQ(np_fio_stat64(path.data(), &info), npFioSuccess);
  EXPECT_EQ(found.st_mode & 0777U, 0600U);
  EXPECT_EQ(info.owner, geteuid());
}

TEST(Paths, Join) {
  struct Case {
    const char* path;
    const char* directory;
    const char* name;
  };
  std::array<char, 12> name;
  for (const Case& joined :
       {Case{"/tmp/x", "/tmp", "x"}, Case{"/tmp/x", "/tmp/", "x"}, Case{"/x", "/", "x"},
        Case{"x", "", "x"}, Case{"d/1234567 9", "d", "1234567 9"}}) {
    EXPECT_EQ(np_fio_pcat(joined.directory, joined.name, name.data(), 12), npFioSuccess);
    EXPECT_STREQ(name.data(), joined.path);
  }
  EXPECT_EQ(np_fio_pcat("d", "1234567890", name.data(), 12), npFioPathTooLong);
  EXPECT_EQ(np_fio_pcat(nullptr, "x", name.data(), 12), npFioBadArgument);
}

TEST(Paths, TakeTheTemporaryDirectoryFromTheEnvironment) {
  std::array<char, npFioPathSize> path;
  const EnvironmentVariable variable("TMPDIR", "/some/where");
  EXPECT_EQ(np_fio_tmpdir(path.data(), 12), npFioSuccess);
  EXPECT_STREQ(path.data(), "/some/where");
  EXPECT_EQ(np_fio_tmpdir(path.data(), 11), npFioPathTooLong);
  variable.set("");
  EXPECT_EQ(np_fio_tmpdir(path.data(), npFioPathSize), npFioSuccess);
  EXPECT_STREQ(path.data(), "/tmp");
}

}  // namespace
