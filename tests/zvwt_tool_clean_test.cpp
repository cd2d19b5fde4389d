/// The verb "clean".

#include "support/ToolFixture.h"

namespace {

TEST_F(Tool, CleansDirectories) {
  const std::string table = import("a\n1\n");
  const auto before = tables_.names();
  const std::string orphan = tables_.write("zvwte_0123456789abcdef", "12345");

  EXPECT_EQ(run("clean", {}).output, "");  // it is too young
  const Outcome dryRun = run("clean", {"--older-than", "0", "--dry-run"});
  EXPECT_EQ(dryRun.exitCode, 0) << dryRun.errors;
  EXPECT_EQ(dryRun.output.find("file "), 0U) << dryRun.output;
  const std::size_t line = dryRun.output.rfind(orphan + "  ");
  ASSERT_NE(line, std::string::npos) << dryRun.output;
  EXPECT_TRUE(dryRun.output.ends_with("s      5\n")) << dryRun.output;
  EXPECT_EQ(dryRun.errors, "zvwt: 1 file, 5 bytes, not removed: a dry run\n");
  EXPECT_EQ(tables_.names().size(), before.size() + 1);

  const std::string json = run("clean", {"--older-than", "0", "--dry-run", "--json"}).output;
  EXPECT_TRUE(json.starts_with("[\n  {\"file\": \"" + inJson(orphan) + "\", \"owner\": \""))
      << json;
  EXPECT_NE(json.find("\", \"age\": "), std::string::npos) << json;
  EXPECT_TRUE(json.ends_with(", \"bytes\": 5, \"removed\": false}\n]\n")) << json;

  EXPECT_EQ(run("clean", {"--older-than", "0s"}).errors, "zvwt: 1 file, 5 bytes, removed\n");
  EXPECT_EQ(tables_.names(), before);
  EXPECT_EQ(run("clean", {"--json"}).output, "[]\n");
  (void)tables_.write("zvwte_0123456789abcdef", "");
  EXPECT_TRUE(run("clean", {"--older-than", "0", "--json"})
                  .output.ends_with(", \"bytes\": 0, \"removed\": true}\n]\n"));
  EXPECT_EQ(tables_.names(), before);
  EXPECT_EQ(exported(table), "a\n1\n");

  (void)tables_.write(table, "damaged");
  const Outcome damaged = run("clean", {"--older-than", "0"});
  EXPECT_EQ(damaged.exitCode, 1);
  EXPECT_EQ(damaged.output, "");
  EXPECT_NE(damaged.errors.find("damaged, and element files that it may name are kept\n"),
            std::string::npos)
      << damaged.errors;

  EXPECT_EQ(runTool({"clean"}).exitCode, 2);
  EXPECT_EQ(runTool({"clean", "--dir", tables_.file("none")}).exitCode, 3);
  for (const char* age : {"", "1w", "-1d", "d", "1 d", "24856d"}) {
    EXPECT_EQ(run("clean", {"--older-than", age}).exitCode, 2) << age;
  }
  for (const char* age : {"700", "3000s", "150m", "2h", "1d", "24855d"}) {
    EXPECT_EQ(run("clean", {"--older-than", age}).exitCode, 0) << age;
  }
}

}  // namespace
