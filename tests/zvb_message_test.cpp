/// The message catalogue.

#include "base/zvb_message.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <limits>
#include <set>
#include <sstream>
#include <string>

#include "support/TemporaryDirectory.h"

namespace {

TEST(Messages, PutTheirArgumentsInPlace) {
  EXPECT_STREQ("1353: The file \"/tmp/x\" cannot be opened: not found.",
               zvbMessage<1353>("f", 1, "c", "/tmp/x", "not found").asCstr());
  EXPECT_STREQ(
      "1785: The work table has format version 2.5; this library reads versions up to 1.0 and "
      "later minor versions of the same major one.",
      zvbMessage<1785>("f", 1, "c", 2, 5, 1, 0).asCstr());
  const ZvbString lowest = zvbMessage<1788>("f", 1, "c", std::numeric_limits<std::int64_t>::min());
  EXPECT_NE(nullptr, std::strstr(lowest.asCstr(), "-9223372036854775808"));
  const char* none = nullptr;
  EXPECT_NE(nullptr, std::strstr(zvbMessage<1045>("f", 1, "c", none).asCstr(), "unknown error"));
  EXPECT_NE(nullptr, std::strstr(zvbMessage<1666>("f", 1, "c", "50%1%2").asCstr(), "\"50%1%2\""));
  EXPECT_STREQ("7: a message of this number is not in the catalogue",
               zvb_get_message("f", 1, "c", 7).asCstr());
}

TEST(Messages, UseEachArgumentOfTheirKinds) {
  int previous = 0;
  for (const ZvbMessageEntry& entry : zvbMessageCatalogue) {
    EXPECT_LT(previous, entry.id) << "numbers ascend";
    previous = entry.id;
    const std::string text = entry.text;
    for (int i = 1; i <= 9; ++i) {
      const bool used = text.find("%" + std::to_string(i)) != std::string::npos;
      EXPECT_EQ(used, i <= static_cast<int>(std::string(entry.kinds).size())) << entry.id;
    }
  }
}

/// The messages named in a header that are raised somewhere under `folder` by its macro.
std::set<int> messagesInUse(const std::filesystem::path& folder, const char* header,
                            const std::string& macro) {
  std::string code;  // without blanks
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      code += TemporaryDirectory::read(entry.path().string());
    }
  }
  std::erase_if(code, [](char byte) { return byte == ' ' || byte == '\n'; });

  std::istringstream names(TemporaryDirectory::read((folder / header).string()));
  std::set<int> used;
  for (std::string line; std::getline(names, line);) {
    char name[64];
    int id = 0;
    if (std::sscanf(line.c_str(), "inline constexpr int %63[A-Za-z] = %d;", name, &id) == 2) {
      const std::string use = macro + "(" + name;
      EXPECT_TRUE(code.find(use + ',') != std::string::npos ||
                  code.find(use + ')') != std::string::npos)
          << name;
      used.insert(id);
    }
  }
  return used;
}

TEST(Messages, AreAllInUse) {
  const std::filesystem::path root = ZVWT_SOURCE_DIR;
  std::set<int> used = messagesInUse(root / "src", "wtelem/messages.h", "WT_MESSAGE");
  used.merge(messagesInUse(root / "platform/datafile", "messages.h", "DATAFILE_MESSAGE"));
  std::set<int> catalogue;
  for (const ZvbMessageEntry& entry : zvbMessageCatalogue) {
    catalogue.insert(entry.id);
  }
  EXPECT_EQ(catalogue, used);
}

}  // namespace
