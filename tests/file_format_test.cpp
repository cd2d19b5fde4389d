/// docs/file-format.md against files really written: the hex dumps in it are the dumps of the table
/// that it describes. "xx" stands for a byte that differs from table to table.

#include <gtest/gtest.h>

#include <bit>
#include <sstream>

#include "support/OtherByteOrder.h"
#include "support/TableFixture.h"

namespace {

/// The bytes of one dump: "xx" or two hex digits each, the offsets checked and left out.
std::vector<std::string> bytesOfDump(const std::string& dump) {
  std::vector<std::string> bytes;
  std::istringstream lines(dump);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    EXPECT_EQ(std::stoul(word, nullptr, 16), bytes.size()) << line;
    const auto isByte = [](const std::string& text) {
      return text == "xx" ||
             (text.size() == 2 && text.find_first_not_of("0123456789abcdef") == std::string::npos);
    };
    while (words >> word && isByte(word)) {
      bytes.push_back(word);
    }
  }
  return bytes;
}

std::vector<std::vector<std::string>> documentedDumps() {
  const std::string document =
      TemporaryDirectory::read(std::string(ZVWT_SOURCE_DIR) + "/docs/file-format.md");
  const std::string opening = "```hex\n";
  std::vector<std::vector<std::string>> dumps;
  for (std::size_t at = document.find(opening); at != std::string::npos;
       at = document.find(opening, at + 1)) {
    const std::size_t start = at + opening.size();
    dumps.push_back(bytesOfDump(document.substr(start, document.find("```", start) - start)));
  }
  return dumps;
}

void expectBytes(const std::vector<std::string>& expected, const std::string& content) {
  ASSERT_EQ(expected.size(), content.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (expected[i] != "xx") {
      EXPECT_EQ(std::stoi(expected[i], nullptr, 16), static_cast<unsigned char>(content[i])) << i;
    }
  }
}

class FileFormat : public TableTest {
 protected:
  /// A table with the bytes that the document shows, which are those of a little-endian machine.
  std::string makeShownTable(const std::vector<Column>& columns, const std::vector<Row>& rows) {
    std::string name = makeTable(columns, rows);
    if (std::endian::native != std::endian::little) {
      OtherByteOrder(directory, name).reverse();
    }
    return name;
  }

  const std::vector<std::vector<std::string>> dumps = documentedDumps();
};

TEST_F(FileFormat, IsWhatTheDocumentShows) {
  const std::string name =
      makeShownTable({{"id", zvbTypeInteger}, {"city", zvbTypeString, 20}},
                     {row({std::int64_t{1}, std::string("Lisbon")}), row({std::int64_t{2}, {}})});
  ASSERT_EQ(4U, dumps.size());
  for (const std::string& file : directory.names()) {
    const std::string content = TemporaryDirectory::read(directory.file(file));
    expectBytes(file == name                 ? dumps[0]
                : file.starts_with("zvwte_") ? dumps[1]
                                             : dumps[2],
                content);
  }
}

TEST_F(FileFormat, HasValuesAsTheDocumentShows) {
  makeShownTable({{"flag", zvbTypeBoolean},
                  {"day", zvbTypeDate},
                  {"price", zvbTypeReal},
                  {"due", zvbTypeDate}},
                 {row({true, std::string("2024-02-29 12:00"), -12.5, std::string("soon")})});
  ASSERT_EQ(4U, dumps.size());
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwte_")) {
      expectBytes(dumps[3], TemporaryDirectory::read(directory.file(file)));
    }
  }
}

}  // namespace
