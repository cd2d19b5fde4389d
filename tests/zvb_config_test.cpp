#include "base/zvb_config.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "base/zvb_uuid.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

namespace {

class Configuration : public testing::Test {
 protected:
  void TearDown() override { options_->clear(); }

  std::string value(const char* key) {
    ZvbString found("(none)");
    const bool isFound = options_->get(key, &found, 0);
    EXPECT_EQ(isFound, found.compare("(none)", true) != 0);
    return found.asCstr();
  }
  void useIniFile(const std::string& content) {
    ini_.set(directory_.write("options.ini", content).c_str());
  }

  TemporaryDirectory directory_;
  EnvironmentVariable ini_{"ZVB_CONFIG", nullptr};
  EnvironmentVariable temp_{"ZVB_BASE_TEMP", nullptr};
  ZvbConfigOptions* options_ = zvbGetConfigOptions(ZvbString());
};

TEST_F(Configuration, AsksTheProgramThenTheEnvironmentThenTheIniFile) {
  EXPECT_EQ(value("BASE/TEMP"), "(none)");
  useIniFile("[BASE]\nTEMP=ini\n");
  EXPECT_EQ(value("BASE/TEMP"), "ini");
  temp_.set("environment");
  EXPECT_EQ(value("BASE/TEMP"), "environment");
  EXPECT_TRUE(options_->set("BASE/TEMP", ""));
  EXPECT_EQ(value("BASE/TEMP"), "");
  EXPECT_TRUE(options_->set("BASE/TEMP", ZvbString(nullptr)));
  temp_.set("");
  EXPECT_EQ(value("BASE/TEMP"), "ini");
}

TEST_F(Configuration, ReadsIniFilesOfManyHands) {
  useIniFile(
      "\xEF\xBB\xBFlonely=1\r\n; TEMP=comment\r\n# [BASE]\r\n[OTHER]\r\nTEMP=other\r\n"
      "  [ base ]  \r\nno option\r\nTEMPER=x\r\n\tTemp =  C:\\a b;D:\\c=d \r\nTEMP=second\r\n"
      "EMPTY=\r\n[broken\r\nLAST=\xC3\xA4");
  EXPECT_EQ(value("BASE/TEMP"), "C:\\a b;D:\\c=d");
  EXPECT_EQ(value("OTHER/TEMP"), "other");
  EXPECT_EQ(value("BASE/EMPTY"), "");
  EXPECT_EQ(value("BASE/LAST"), "\xC3\xA4");
  EXPECT_EQ(value("LONELY"), "1");
  EXPECT_EQ(value("BASE/LONELY"), "(none)");
  EXPECT_EQ(value(""), "(none)");
}

TEST_F(Configuration, DoesWithoutAnIniFileThatCannotBeRead) {
  for (const std::string& path : {directory_.path(), directory_.file("none")}) {
    ini_.set(path.c_str());
    EXPECT_EQ(value("BASE/TEMP"), "(none)");
  }
}

TEST(Uuid, IsRandomInItsUsualForm) {
  std::set<std::string> seen;
  for (int count = 0; count < 100; ++count) {
    const std::string uuid = zvbGetUUID().asCstr();
    ASSERT_EQ(uuid.size(), 36U);
    EXPECT_EQ(uuid.find_first_not_of("0123456789abcdef-"), std::string::npos) << uuid;
    EXPECT_TRUE(uuid[8] == '-' && uuid[13] == '-' && uuid[18] == '-' && uuid[23] == '-') << uuid;
    EXPECT_TRUE(uuid[14] == '4' && std::string("89ab").find(uuid[19]) != std::string::npos) << uuid;
    EXPECT_TRUE(seen.insert(uuid).second) << uuid;
  }
}

}  // namespace
