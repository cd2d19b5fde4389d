/// The verb "check".

#include <filesystem>

#include "support/Bytes.h"
#include "support/ThisSystem.h"
#include "support/ToolFixture.h"

namespace {

TEST_F(Tool, ChecksTables) {
  const std::string sound = import("a\n1\n2\n");
  const std::string damaged = import("a\n1\n");
  Bytes(tables_.file(damaged)).set<std::int64_t>(24, 7).save();
  const std::string place = tables_.file(damaged);
  const std::string rule = "the table has 7 rows: those of its elements add up to 1";

  Outcome outcome = run("check", {sound});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, sound + ": sound, 2 rows\n");
  EXPECT_EQ(run("check", {"--json", sound}).output, "[]\n");

  outcome = run("check", {damaged, "zvwt_missing", sound});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.output,
            damaged + ": " + place + ", byte 24: " + rule + '\n' + sound + ": sound, 2 rows\n");
  EXPECT_NE(outcome.errors.find("zvwt_missing"), std::string::npos) << outcome.errors;

  outcome = run("check", {"--json", sound, damaged});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "[\n  {\"table\": \"" + damaged + "\", \"file\": \"" + inJson(place) +
                                "\", \"offset\": 24, \"rule\": \"" + rule + "\"}\n]\n");
}

TEST_F(Tool, EscapesNamesInJson) {
  if (isWindows) {
    GTEST_SKIP() << "the system refuses such names";
  }
  const std::string table = import("a\n1\n");
  Bytes(tables_.file(table)).set<std::int64_t>(24, 7).save();
  const std::string strange = files_.file("a\"\\\x01\n\xC3\xA9\xFF\xED\xA0\x80");
  std::filesystem::rename(tables_.path(), strange);
  const Outcome outcome = runTool({"check", "--json", "--dir", strange, table});
  EXPECT_NE(outcome.output.find("\"file\": \"" + files_.file("a\\\"\\\\\\u0001\\u000a\xC3\xA9") +
                                "\\ufffd\\ufffd\\ufffd\\ufffd/" + table + "\", "),
            std::string::npos)
      << outcome.output;
}

}  // namespace
