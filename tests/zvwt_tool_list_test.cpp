/// The verb "list".

#include <chrono>
#include <filesystem>

#include "ZvwtHandles.h"
#include "support/ToolFixture.h"
#include "text/Age.h"

namespace {

using namespace std::chrono_literals;

void makeOld(const std::string& path, std::chrono::seconds age) {
  const auto now = std::filesystem::file_time_type::clock::now();
  std::filesystem::last_write_time(path, now - age);
}

std::int64_t bytesOf(const TemporaryDirectory& directory) {
  std::int64_t bytes = 0;
  for (const std::string& name : directory.names()) {
    bytes += static_cast<std::int64_t>(std::filesystem::file_size(directory.file(name)));
  }
  return bytes;
}

TEST(Age, HasItsTwoLargestUnits) {
  const std::vector<std::pair<std::int64_t, std::string>> cases = {
      {0, "0s"},       {59, "59s"},        {60, "1m 0s"},    {3599, "59m 59s"},
      {3600, "1h 0m"}, {86399, "23h 59m"}, {86400, "1d 0h"}, {1000000, "11d 13h"},
  };
  for (const auto& [seconds, shown] : cases) {
    EXPECT_EQ(zvwttool::shownAge(seconds), shown);
  }
}

TEST_F(Tool, ListsTables) {
  Outcome outcome = run("list", {});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "zvwt: no tables\n");
  EXPECT_EQ(run("list", {"--json"}).output, "[]\n");

  const std::string first = import("a,b\n1,x\n2,\n");
  const std::string bytes = std::to_string(bytesOf(tables_));
  const std::string second = import("a\n");
  const std::string path = tables_.file(first);
  makeOld(path, 26h);
  makeOld(tables_.file(second), 30h);
  (void)tables_.write("zvwt_0123456789abcdeX", "no table's name");
  (void)tables_.write("zvwt_0123456789abcde", "nor this");
  (void)tables_.write("people.csv", "a\n1\n");
  std::filesystem::create_directory(tables_.file("zvwt_fedcba9876543210"));

  outcome = run("list", {});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.output,
            "table                  rows  columns  bytes    age\n"
            "---------------------  ----  -------  -----  -----\n" +
                first + "     2        2    " + bytes + "  1d 2h\n" + second +
                "     0        1     " +
                std::to_string(std::filesystem::file_size(tables_.file(second))) + "  1d 6h\n");
  makeOld(tables_.file(second), 0s);
  EXPECT_LT(run("list", {}).output.find(second), run("list", {}).output.find(first));
  EXPECT_EQ(run("delete", {second}).exitCode, 0);
  // A directory that is given again has no further tables. The last digits of the age may differ.
  const std::string json = run("list", {"--json", "--dir", tables_.path()}).output;
  EXPECT_TRUE(json.starts_with("[\n  {\"name\": \"" + first + "\", \"path\": \"" + inJson(path) +
                               "\", \"rows\": 2, \"columns\": 2, \"bytes\": " + bytes +
                               ", \"age\": 936"))
      << json;
  EXPECT_TRUE(json.ends_with(", \"problem\": null}\n]\n")) << json;
  EXPECT_EQ(runTool({"list", "--dir", tables_.file("none")}).exitCode, 3);
}

TEST_F(Tool, ListsTablesOfSeveralDirectories) {
  const std::string first = import("a\n");
  const std::string second =
      nameIn(runTool({"import", "--dir", files_.path(), files_.file("in.csv")}));
  (void)files_.write(first, "the library finds the one in the first directory");
  const Outcome outcome = run("list", {"--dir", files_.path()});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 4) << outcome.output;
  EXPECT_NE(outcome.output.find(second + "     0 "), std::string::npos) << outcome.output;
}

TEST_F(Tool, ListsDamagedTablesButNoneThatIsBeingWritten) {
  const std::string damaged = import("a\n1\n");
  const std::string lost = import("a\n1\n");
  (void)tables_.write(damaged, "damaged");
  makeOld(tables_.file(damaged), 2h);
  makeOld(tables_.file(lost), 3h);
  for (const std::string& name : tables_.names()) {
    if (name.starts_with("zvwte")) {
      std::filesystem::remove(tables_.file(name));
    }
  }
  ZvbString error;
  const zvwt::Manager manager(zvwtCreateManager("writer", tables_.path().c_str(), &error));
  const zvwt::Table unfinished(manager->createTable(1, 0, &error));
  ASSERT_NE(unfinished, nullptr) << error.asCstr();
  ASSERT_TRUE(unfinished->defineColumn(0, "a", zvbTypeInteger, 0));
  (void)tables_.write("zvwt_00000000killed00", std::string(5000, '\0'));

  Outcome outcome = run("list", {});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output,
            "table                     rows  columns  bytes    age\n"
            "---------------------  -------  -------  -----  -----\n" +
                damaged + "  damaged                  2h 0m\n" + lost +
                "  damaged                  3h 0m\n");
  EXPECT_TRUE(outcome.errors.starts_with("zvwt: " + damaged + ": 1773: ")) << outcome.errors;
  EXPECT_NE(outcome.errors.find("\nzvwt: " + lost + ": 1353: "), std::string::npos)
      << outcome.errors;

  outcome = run("list", {"--json"});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.output.find("\"rows\": null, \"columns\": null, \"bytes\": null, \"age\": 72"),
            std::string::npos)
      << outcome.output;
  EXPECT_NE(outcome.output.find(", \"problem\": \"1773: "), std::string::npos) << outcome.output;
}

}  // namespace
