#include <algorithm>
#include <limits>
#include <new>
#include <numeric>
#include <optional>

#include "commands/Commands.h"
#include "formats/CsvInput.h"
#include "formats/CsvReader.h"
#include "formats/TypeInference.h"
#include "process/Diagnostics.h"
#include "process/Failure.h"
#include "process/InterruptGuard.h"
#include "process/Progress.h"
#include "tables/ColumnNames.h"
#include "tables/Directories.h"
#include "tables/FieldValue.h"
#include "tables/NewTable.h"
#include "tables/SortKeys.h"
#include "text/Counted.h"
#include "text/DisplayText.h"
#include "text/NearName.h"

namespace zvwttool {
namespace {

struct Column {
  std::string name;
  std::optional<zvbType> givenType = std::nullopt;
  zvbType type = zvbTypeString;
  std::string reason = {};    // for the type
  int width = 0;              // bytes, 0 for no limit
  std::int64_t cutTexts = 0;  // that were longer than the width
};

bool isNameless(const CsvReader& reader, std::size_t column) {
  const std::vector<std::size_t>& nameless = reader.namelessColumns();
  return std::binary_search(nameless.begin(), nameless.end(), column);
}

[[noreturn]] void failForColumn(const char* option, const std::string& name,
                                const std::string& suggestion) {
  throw Failure(ExitCode::usage,
                std::string(option) + ": there is no column " + quotedName(name) + suggestion);
}

/// One run of an import, step by step.
class Import {
 public:
  Import(ZvWorkTableManager& manager, const ImportOptions& options)
      : manager_(manager),
        options_(options),
        shortRows_(options.fillsShortRows ? CsvReader::ShortRows::filled
                                          : CsvReader::ShortRows::refused),
        input_(options.file, splitDirectories(manager.getDirectoryList().asCstr())) {}

  void run();

 private:
  void planColumns(const CsvReader& reader);
  void suggestDelimiter() const;
  void rejectRepeatedNames(const CsvReader& reader) const;
  static void remarkNumberedNames(const CsvReader& reader);
  void applyGivenTypes();
  void applyGivenWidths();
  void checkSortColumns();
  void inferTypes(CsvReader* reader);
  void makeTable(CsvReader* reader);
  void defineColumns(NewTable* table) const;
  void writeRows(CsvReader* reader, NewTable* table);
  void convertRow(const CsvReader& reader);
  [[nodiscard]] Column* findColumn(const std::string& name);
  [[nodiscard]] Column& columnOf(const char* option, const std::string& name);
  [[nodiscard]] std::vector<std::string> columnNames() const;
  void reportColumns() const;
  void reportRows(const CsvReader& reader) const;

  ZvWorkTableManager& manager_;
  const ImportOptions& options_;
  CsvReader::ShortRows shortRows_;
  CsvInput input_;
  std::vector<Column> columns_;
  std::vector<ZvbDatavar> values_;
  std::int64_t rowCount_ = 0;
};

void Import::run() {
  const InterruptGuard guard;
  CsvReader reader(&input_, options_.form, shortRows_);
  reader.readHeader();
  planColumns(reader);
  const bool allGiven = std::all_of(columns_.begin(), columns_.end(), [](const Column& column) {
    return column.givenType.has_value();
  });
  if (allGiven) {
    makeTable(&reader);
    return;
  }
  inferTypes(&reader);
  CsvReader again(&input_, options_.form, shortRows_);
  again.readHeader();
  makeTable(&again);
}

void Import::planColumns(const CsvReader& reader) {
  for (const std::string& name : reader.columnNames()) {
    columns_.push_back({.name = name});
  }
  values_.resize(columns_.size());
  rejectRepeatedNames(reader);
  remarkNumberedNames(reader);
  suggestDelimiter();
  applyGivenTypes();
  applyGivenWidths();
  checkSortColumns();
}

// Sorted by name, columns that the library takes for one are neighbours.
void Import::rejectRepeatedNames(const CsvReader& reader) const {
  std::vector<ZvbString> names;
  for (const Column& column : columns_) {
    names.emplace_back(column.name.c_str());
  }
  std::vector<std::size_t> order(names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&names](std::size_t left, std::size_t right) {
    return names[left].compare(names[right], false) < 0;
  });
  const auto repeated =
      std::adjacent_find(order.begin(), order.end(), [&names](std::size_t left, std::size_t right) {
        return sameName(names[left], names[right]);
      });
  if (repeated == order.end()) {
    return;
  }
  for (const std::size_t column : {*repeated, *std::next(repeated)}) {
    if (isNameless(reader, column)) {
      reader.failAtField(column, "the column has no name, and another one is called that");
    }
  }
  reader.failAtField(*std::next(repeated), "another column has this name, letter case aside");
}

void Import::remarkNumberedNames(const CsvReader& reader) {
  for (const std::size_t column : reader.namelessColumns()) {
    remark("column " + std::to_string(column + 1) + " has no name and is called " +
           quotedName(reader.columnNames()[column]));
  }
}

/// A file in which something else stands between the fields looks like one of a single column.
void Import::suggestDelimiter() const {
  if (columns_.size() != 1 || !options_.form.hasHeader) {
    return;
  }
  const std::size_t place = columns_[0].name.find_first_of(";\t|");
  if (place != std::string::npos) {
    const char found = columns_[0].name[place];
    remark("there is one column; did you mean --delimiter " +
           (found == '\t' ? "tab?" : std::string("'") + found + "'?"));
  }
}

void Import::applyGivenTypes() {
  for (const GivenType& given : options_.types) {
    Column& column = columnOf("--type", given.column);
    if (column.givenType.value_or(given.type) != given.type) {
      throw Failure(ExitCode::usage, "--type: column " + quotedName(given.column) + " is to be " +
                                         typeWord(column.type) + " and " + typeWord(given.type));
    }
    column.givenType = given.type;
    column.type = given.type;
    column.reason = "given";
  }
}

// A width is for texts only, so that it makes its column one of strings.
void Import::applyGivenWidths() {
  for (const GivenWidth& given : options_.widths) {
    Column& column = columnOf("--width", given.column);
    if (column.givenType.value_or(zvbTypeString) != zvbTypeString) {
      throw Failure(ExitCode::usage,
                    "--width: column " + quotedName(given.column) + " is no string column");
    }
    if (column.width != 0 && column.width != given.bytes) {
      throw Failure(ExitCode::usage, "--width: column " + quotedName(given.column) +
                                         " is to have " + std::to_string(column.width) + " and " +
                                         counted(given.bytes, "byte"));
    }
    column.givenType = zvbTypeString;
    column.reason = "given";
    column.width = given.bytes;
  }
}

// Before the text is read through for its types.
void Import::checkSortColumns() {
  for (const SortKey& key : options_.sort.keys) {
    if (findColumn(key.column) == nullptr) {
      failForColumn("--sort", key.column, didYouMean(key, columnNames()));
    }
  }
}

Column* Import::findColumn(const std::string& name) {
  const auto found = std::find_if(columns_.begin(), columns_.end(), [&name](const Column& column) {
    return sameName(column.name.c_str(), name.c_str());
  });
  return found == columns_.end() ? nullptr : &*found;
}

Column& Import::columnOf(const char* option, const std::string& name) {
  Column* const found = findColumn(name);
  if (found == nullptr) {
    failForColumn(option, name, didYouMean(name, columnNames()));
  }
  return *found;
}

std::vector<std::string> Import::columnNames() const {
  std::vector<std::string> names;
  for (const Column& column : columns_) {
    names.push_back(column.name);
  }
  return names;
}

void Import::inferTypes(CsvReader* reader) {
  TypeInference inference(columns_.size());
  Progress progress("looking for types", ProgressUnit::bytes, input_.size());
  while (reader->readRow()) {
    InterruptGuard::check();
    progress.update(input_.bytesRead());
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      if (!reader->isNull(column) && !columns_[column].givenType.has_value()) {
        inference.observe(column, reader->text(column), reader->line(column));
      }
    }
  }
  input_.rewind();
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    if (!columns_[column].givenType.has_value()) {
      columns_[column].type = inference.typeOf(column);
      columns_[column].reason = inference.reasonFor(column);
    }
  }
}

void Import::makeTable(CsvReader* reader) {
  reportColumns();
  NewTable table(&manager_);
  defineColumns(&table);
  writeRows(reader, &table);
  table.close();
  table.finish();
  reportRows(*reader);
}

void Import::defineColumns(NewTable* table) const {
  if (columns_.size() > std::numeric_limits<int>::max()) {
    throw Failure(ExitCode::usage, "there are too many columns");
  }
  const auto count = static_cast<int>(columns_.size());
  table->create(count, options_.maxElementSize, options_.sort.keys.size());
  for (int index = 0; index < count; ++index) {
    const Column& column = columns_[static_cast<std::size_t>(index)];
    table->defineColumn(index, column.name, column.type, column.width);
  }
  if (!options_.sort.keys.empty()) {
    table->sortBy(options_.sort);
  }
}

void Import::writeRows(CsvReader* reader, NewTable* table) {
  Progress progress("importing", ProgressUnit::bytes, input_.size());
  while (reader->readRow()) {
    convertRow(*reader);
    table->writeRow(values_.data());
    InterruptGuard::check();
    progress.update(input_.bytesRead());
    ++rowCount_;
  }
}

void Import::convertRow(const CsvReader& reader) {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Column& column = columns_[i];
    if (reader.isNull(i)) {
      values_[i].setNull();
      continue;
    }
    const std::string_view text = reader.text(i);
    if (!readField(text, column.type, &values_[i])) {
      if (values_[i].memoryShort()) {
        throw std::bad_alloc();
      }
      reader.failAtField(i, "the field " + quotedName(text) + " is no " + typeWord(column.type));
    }
    if (column.width > 0 && text.size() > static_cast<std::size_t>(column.width)) {
      ++column.cutTexts;
    }
  }
}

void Import::reportColumns() const {
  for (const Column& column : columns_) {
    remark("column " + quotedName(column.name) + ": " + typeWord(column.type) +
           (column.reason.empty() ? "" : " (" + column.reason + ")"));
  }
}

void Import::reportRows(const CsvReader& reader) const {
  for (const Column& column : columns_) {
    if (column.cutTexts != 0) {
      remark("column " + quotedName(column.name) + ": " +
             counted(column.cutTexts, "text was", "texts were") + " cut to " +
             counted(column.width, "byte"));
    }
  }
  if (reader.filledRows() != 0) {
    remark(counted(reader.filledRows(), "short row: its", "short rows: their") +
           " missing fields are null");
  }
  remark(counted(rowCount_, "row"));
}

}  // namespace

ExitCode runImport(ZvWorkTableManager& manager, const ImportOptions& options) {
  requireUsable(options.form);
  Import(manager, options).run();
  return ExitCode::success;
}

}  // namespace zvwttool
