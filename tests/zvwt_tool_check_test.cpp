/// The verb "check".

#include "support/Bytes.h"
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
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output,
            damaged + ": " + place + ", byte 24: " + rule + '\n' + sound + ": sound, 2 rows\n");
  EXPECT_TRUE(outcome.errors.starts_with("zvwt: zvwt_missing: 1353")) << outcome.errors;

  outcome = run("check", {"--json", sound, damaged});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "[\n  {\"table\": \"" + damaged + "\", \"file\": \"" + place +
                                "\", \"offset\": 24, \"rule\": \"" + rule + "\"}\n]\n");
}

}  // namespace
