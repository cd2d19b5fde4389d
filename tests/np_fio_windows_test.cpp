/// What the file layer makes of what only Windows has.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "fio/np_fio.h"
#include "support/EnvironmentVariable.h"
#include "support/OpenedFile.h"
#include "support/TemporaryDirectory.h"
#include "support/Wide_windows.h"

namespace {

/// A file that someone else has open, or could not open.
class ForeignHandle {
 public:
  ForeignHandle(const std::string& path, DWORD access, DWORD sharing)
      : handle_(CreateFileW(toWide(path).c_str(), access, sharing, nullptr, OPEN_EXISTING, 0,
                            nullptr)) {}
  ForeignHandle(const ForeignHandle&) = delete;
  ForeignHandle& operator=(const ForeignHandle&) = delete;
  ~ForeignHandle() { CloseHandle(handle_); }

  [[nodiscard]] bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

constexpr DWORD everything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

TEST(OpenFile, LetsOthersReadAndDeleteIt) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("file", "text");
  for (const int mode : {npFioRead, npFioReadWrite, npFioOnlyWriter}) {
    const File file = opened(path, mode);
    EXPECT_TRUE(ForeignHandle(path, GENERIC_READ, everything).isOpen()) << mode;
    EXPECT_TRUE(ForeignHandle(path, DELETE, everything).isOpen()) << mode;
    std::array<char, 4> bytes;
    EXPECT_EQ(np_fio_getb(file.get(), bytes.data(), 4), 4);
  }
  File file = opened(path, npFioRead);
  EXPECT_EQ(np_fio_unlink(path.c_str()), npFioSuccess);
  std::array<char, 4> bytes;
  EXPECT_EQ(np_fio_getb(file.get(), bytes.data(), 4), 4);
  file.reset();
  EXPECT_EQ(directory.names(), std::vector<std::string>());
}

TEST(OpenFile, IsToldThatOthersKeepItForThemselves) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("file", "text");
  const ForeignHandle kept(path, GENERIC_READ | GENERIC_WRITE, 0);
  ASSERT_TRUE(kept.isOpen());
  for (const int mode : {npFioRead, npFioReadWrite, npFioOnlyWriter}) {
    EXPECT_EQ(openStatus(path, mode), npFioInUse);
  }
  EXPECT_EQ(np_fio_unlink(path.c_str()), npFioInUse);
}

TEST(OpenFile, TakesRegularFilesOnly) {
  const TemporaryDirectory directory;
  const std::string file = directory.write("file", "x");
  for (const int mode : {npFioRead, npFioReadWrite, npFioOnlyWriter}) {
    EXPECT_EQ(openStatus(directory.path(), mode), npFioNotRegular);
    EXPECT_EQ(openStatus("NUL", mode), npFioNotRegular);
    EXPECT_EQ(openStatus(directory.file("none"), mode), npFioNotFound);
    EXPECT_EQ(openStatus(file + "\\below", mode), npFioNotFound);
    EXPECT_EQ(openStatus(directory.file("none\\below"), mode), npFioNotFound);
    EXPECT_EQ(openStatus(directory.file(std::string(256, 'n')), mode), npFioPathTooLong);
    EXPECT_EQ(openStatus(directory.path() + "\\a\xFF", mode), npFioNotPlainName);
    EXPECT_EQ(openStatus(directory.file("a*b"), mode), npFioNotPlainName);
  }
  EXPECT_EQ(openStatus(file, 0), npFioBadArgument);
}

TEST(OpenFile, MayHaveAnyName) {
  const TemporaryDirectory directory;
  const std::string path = directory.path() + "\\Gr\u00F6\u00DFe \u20AC \U0001F600";
  std::ofstream(std::filesystem::path(toWide(path))) << "x";
  EXPECT_EQ(openStatus(path, npFioOnlyWriter), npFioSuccess);
  EXPECT_EQ(np_fio_unlink(path.c_str()), npFioSuccess);
}

TEST(NewFile, BelongsToTheUserAlone) {
  const TemporaryDirectory directory;
  std::array<char, npFioPathSize> path;
  np_fio_handle file = nullptr;
  ASSERT_EQ(np_fio_tmpfile(directory.path().c_str(), "t_", path.data(), npFioPathSize, &file), 0);
  np_fio_close(file);
  alignas(SECURITY_DESCRIPTOR) std::array<unsigned char, 4096> bytes;
  DWORD size = 0;
  ASSERT_NE(GetFileSecurityW(toWide(path.data()).c_str(), DACL_SECURITY_INFORMATION, bytes.data(),
                             static_cast<DWORD>(bytes.size()), &size),
            FALSE);
  BOOL isThere = FALSE;
  BOOL isDefault = FALSE;
  ACL* list = nullptr;
  ASSERT_NE(GetSecurityDescriptorDacl(bytes.data(), &isThere, &list, &isDefault), FALSE);
  ASSERT_TRUE(isThere != FALSE && list != nullptr);
  std::array<unsigned char, SECURITY_MAX_SID_SIZE> everyone;
  DWORD sidSize = static_cast<DWORD>(everyone.size());
  ASSERT_NE(CreateWellKnownSid(WinWorldSid, nullptr, everyone.data(), &sidSize), FALSE);
  for (WORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    ASSERT_NE(GetAce(list, i, &entry), FALSE);
    const auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    const bool grants = allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
                        (allowed->Mask & (FILE_READ_DATA | FILE_WRITE_DATA)) != 0;
    EXPECT_FALSE(grants && EqualSid(const_cast<DWORD*>(&allowed->SidStart), everyone.data()));
  }
}

TEST(Paths, HaveBothSeparatorsAndDrives) {
  struct Case {
    const char* path;
    const char* directory;
    const char* name;
  };
  std::array<char, 24> directory;
  std::array<char, 24> name;
  for (const Case& split :
       {Case{"C:\\tmp\\x", "C:\\tmp", "x"}, Case{"C:\\tmp/x", "C:\\tmp", "x"},
        Case{"C:\\x", "C:\\", "x"}, Case{"\\x", "\\", "x"}, Case{"a\\/b", "a", "b"},
        Case{"\\\\host\\share\\x", "\\\\host\\share", "x"}}) {
    ASSERT_EQ(np_fio_pparse(split.path, directory.data(), 24, name.data(), 24), npFioSuccess);
    EXPECT_STREQ(directory.data(), split.directory);
    EXPECT_STREQ(name.data(), split.name);
  }
  for (const Case& joined : {Case{"C:\\tmp\\x", "C:\\tmp", "x"}, Case{"C:\\x", "C:\\", "x"},
                             Case{"C:/x", "C:/", "x"}, Case{"x", "", "x"}}) {
    EXPECT_EQ(np_fio_pcat(joined.directory, joined.name, name.data(), 24), npFioSuccess);
    EXPECT_STREQ(name.data(), joined.path);
  }
}

TEST(Paths, TakeTheTemporaryDirectoryFromTheSystem) {
  std::array<char, npFioPathSize> path;
  const TemporaryDirectory directory;
  const EnvironmentVariable variable("TMP", directory.path().c_str());
  EXPECT_EQ(np_fio_tmpdir(path.data(), npFioPathSize), npFioSuccess);
  EXPECT_EQ(directory.path(), path.data());
  EXPECT_EQ(np_fio_tmpdir(path.data(), 5), npFioPathTooLong);
}

}  // namespace
