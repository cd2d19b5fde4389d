/// Writes inputs for the fuzz targets to begin with: zvwt-fuzz-seeds FOLDER fills FOLDER/uri,
/// FOLDER/values and FOLDER/table. Those of tables are cut from tables that the library has just
/// written. The target of calls finds its own.

#include <filesystem>
#include <fstream>

#include "RowTexts.h"
#include "WorkFolder.h"

namespace {

namespace fs = std::filesystem;

void save(const fs::path& folder, const std::string& content) {
  fs::create_directories(folder);
  const auto number = std::distance(fs::directory_iterator(folder), fs::directory_iterator());
  std::ofstream(folder / ("seed" + std::to_string(number)), std::ios::binary) << content;
}

std::string load(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

template <typename Number>
std::string bytesOf(Number number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

std::string withSize(const std::string& text) { return static_cast<char>(text.size()) + text; }

// ---- URIs and values

void saveUris(const fs::path& folder) {
  for (const char* uri :
       {"zvwt:t", "zvwt:t?rows=0,-1", "ZVWT:t?rows=1,3&col=id&col=x,city", "file:///x",
        "zvwt:t?col=k,42,2&col=n,,3&col=d,2024-02-29,5&col=b,yes,1&col=s,a%2Cb,4",
        "zvwt:a%20b?col=%C3%A9&col=CITY&col=city,ID&rows=4,9223372036854775807",
        "zvwt:t?rows=-1,-2", "zvwt:t?col=none,text", "zvwt:t?", "zvwt:t&col=a", "C:\\x"}) {
    save(folder, uri);
  }
}

void saveValues(const fs::path& folder) {
  for (const char* number : {"0", "-12.5", "1e-60", "+00100.00e5", " 7\t", "1.7976931348623157e308",
                             "99999999999999999999999999999999999999", "9223372036854775808"}) {
    save(folder, '\0' + withSize(number) + "-9223372036854775808");
  }
  constexpr std::uint64_t sign = std::uint64_t{1} << 62;
  save(folder, '\1' + bytesOf(sign | 0xFFFFFFFE) + bytesOf<std::uint64_t>(12345) +
                   bytesOf<std::uint64_t>(1));
  for (const char* date : {"2024-02-29", "0001-01-01T00:00:00.000", "9999-12-31 23:59:59.9999"}) {
    save(folder, '\2' + std::string(date));
  }
  for (const double days : {0.0, -719162.0, 2932896.9999999, 19782.5}) {
    save(folder, '\3' + bytesOf(days));
    save(folder, std::string("\4\2") + bytesOf(days));
    save(folder, std::string("\4\4") + bytesOf(days));
  }
  for (const char* text : {"true", "12", "-1.5e300", "2024-02-29 13:45", "no"}) {
    save(folder, std::string("\4\6") + withSize(text));
  }
  save(folder, std::string("\5\7") + withSize("\xC3\xA9") + withSize("E") +
                   "caf\xC3\xA9 \xC3\x89t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xC3");
  save(folder, std::string("\5\2") + withSize("ab") + withSize("") + "ababAB abab");
}

// ---- Tables

/// The catalogue with its elements' files under the names that the target writes, and the content
/// of the first element's.
std::string withKnownNames(const std::string& catalogue, const WorkFolder& folder,
                           std::string* data, std::string* index) {
  constexpr std::size_t dataNameSize = 23;
  constexpr std::size_t indexNameSize = 24;
  std::string result = catalogue;
  char element = 'a';
  for (std::size_t at = result.find("zvwte_"); at != std::string::npos;
       at = result.find("zvwte_", at + 1), ++element) {
    if (element == 'a') {
      *data = load(folder.path() + "/" + result.substr(at, dataNameSize - 1));
      *index = load(folder.path() + "/" + result.substr(at + dataNameSize, indexNameSize - 1));
    }
    const std::string letters(16, element);
    result.replace(at, dataNameSize + indexNameSize,
                   "zvwte_" + letters + '\0' + "zvwtei_" + letters + '\0');
  }
  return result;
}

struct Field {
  std::size_t offset;
  std::size_t size;
};

void reverse(std::string* bytes, Field field) {
  const auto begin = bytes->begin() + static_cast<std::ptrdiff_t>(field.offset);
  std::reverse(begin, begin + static_cast<std::ptrdiff_t>(field.size));
}

/// As another machine would have written a catalogue of the column "id" and of one element.
void reverseCatalogue(std::string* catalogue) {
  constexpr Field fields[] = {{0, 2},  {2, 2},  {4, 2},  {6, 2},  {8, 4},  {12, 4},
                              {16, 8}, {24, 8}, {33, 2}, {35, 2}, {37, 4}, {41, 4},
                              {45, 4}, {52, 4}, {56, 2}, {58, 2}, {60, 8}};
  for (const Field& field : fields) {
    reverse(catalogue, field);
  }
}

/// Numbers of 8 bytes, each behind `gap` other ones.
void reverseNumbers(std::string* bytes, std::size_t gap) {
  for (std::size_t at = gap; at + 8 <= bytes->size(); at += gap + 8) {
    reverse(bytes, {at, 8});
  }
}

class TableSeeds {
 public:
  explicit TableSeeds(fs::path target)
      : target_(std::move(target)),
        manager_(zvwtCreateManager("seeds", folder_.path().c_str(), &error_)) {}

  /// Rows of all types: numbers, texts around the sizes at which they are stored in another way.
  void add(int columns, int rows, std::int64_t elementSize, bool otherByteOrder = false) {
    constexpr zvbType types[] = {zvbTypeInteger, zvbTypeString, zvbTypeReal, zvbTypeDate,
                                 zvbTypeBoolean};
    constexpr const char* names[] = {"id", "city", "r", "d", "b"};
    const zvwt::Table table(manager_->createTable(columns, elementSize, &error_));
    bool good = table != nullptr;
    for (int i = 0; i < columns && good; ++i) {
      good = table->defineColumn(i, names[i], types[i], 0);
    }
    ZvbDatavar row[5];
    for (int i = 0; i < rows && good; ++i) {
      row[0].assign(i);
      row[1].assign(std::string(static_cast<std::size_t>(i) * 45, 'x').c_str());
      row[2].assign(i * 1.25);
      row[3].assign(i % 3 == 1 ? nullptr : "2024-02-29 12:00");
      row[4].assign(i % 2 == 0);
      good = table->writeRow(row);
    }
    FUZZ_CHECK(good && table->close(), error_.asCstr());
    saveTable(table->getName().asCstr(), otherByteOrder);
  }

 private:
  void saveTable(const std::string& name, bool otherByteOrder) {
    std::string data;
    std::string index;
    std::string catalogue =
        withKnownNames(load(folder_.path() + "/" + name), folder_, &data, &index);
    const auto sizes = bytesOf(static_cast<std::uint16_t>(catalogue.size())) +
                       bytesOf(static_cast<std::uint16_t>(data.size()));
    if (otherByteOrder) {
      reverseCatalogue(&catalogue);
      reverseNumbers(&data, 1);
      reverseNumbers(&index, 0);
    }
    save(target_, sizes + catalogue + data + index);
  }

  fs::path target_;
  WorkFolder folder_;
  ZvbString error_;
  zvwt::Manager manager_;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: zvwt-fuzz-seeds FOLDER\n");
    return 2;
  }
  const fs::path folder = arguments[1];
  saveUris(folder / "uri");
  saveValues(folder / "values");
  TableSeeds tables(folder / "table");
  tables.add(5, 5, 0);
  tables.add(2, 4, 0);
  tables.add(1, 6, 30);  // two elements
  tables.add(1, 6, 0, true);
  tables.add(2, 0, 0);
  tables.add(0, 3, 0);
  return 0;
}
