#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>

#include "Commands.h"
#include "CsvInput.h"
#include "CsvReader.h"
#include "Diagnostics.h"
#include "Directories.h"
#include "DisplayText.h"
#include "FieldValue.h"
#include "Handles.h"
#include "InterruptGuard.h"
#include "NewTable.h"
#include "OutputBuffer.h"
#include "TypeInference.h"

namespace zvwttool {
namespace {

struct Column {
  std::string name;
  std::optional<zvbType> givenType;
  zvbType type = zvbTypeString;
  int width = 0;              // bytes, 0 for no limit
  std::int64_t cutTexts = 0;  // that were longer than the width
};

bool sameName(const std::string& left, const std::string& right) {
  return ZvbString(left.c_str()).compare(right.c_str(), false) == 0;
}

/// One run of an import, step by step. A step that fails has said why.
class Import {
 public:
  Import(ZvWorkTableManager& manager, const ImportOptions& options)
      : manager_(manager), options_(options) {}

  [[nodiscard]] ExitCode run();

 private:
  [[nodiscard]] ExitCode openInput();
  [[nodiscard]] ExitCode planColumns(const CsvReader& reader);
  [[nodiscard]] ExitCode rejectRepeatedNames(const CsvReader& reader);
  [[nodiscard]] ExitCode applyGivenTypes();
  [[nodiscard]] ExitCode applyGivenWidths();
  [[nodiscard]] ExitCode checkSortColumns();
  [[nodiscard]] ExitCode inferTypes(CsvReader* reader);
  [[nodiscard]] ExitCode makeTable(CsvReader* reader);
  [[nodiscard]] ExitCode defineColumns(NewTable* table);
  [[nodiscard]] ExitCode writeRows(CsvReader* reader, NewTable* table);
  [[nodiscard]] ExitCode convertRow(const CsvReader& reader);
  [[nodiscard]] ExitCode finishTable(NewTable* table);  // and prints its name
  [[nodiscard]] Column* findColumn(const std::string& name);
  void reportColumns() const;
  void reportRows() const;

  ZvWorkTableManager& manager_;
  const ImportOptions& options_;
  CsvInput input_;
  std::vector<Column> columns_;
  std::vector<ZvbDatavar> values_;
  std::int64_t rowCount_ = 0;
};

ExitCode Import::run() {
  ExitCode step = openInput();
  if (step != ExitCode::success) {
    return step;
  }
  CsvReader reader(&input_);
  if (!reader.readHeader()) {
    return fail(reader.errorText());
  }
  step = planColumns(reader);
  if (step != ExitCode::success) {
    return step;
  }
  const bool allGiven = std::all_of(columns_.begin(), columns_.end(), [](const Column& column) {
    return column.givenType.has_value();
  });
  return allGiven ? makeTable(&reader) : inferTypes(&reader);
}

ExitCode Import::openInput() {
  std::string error;
  const auto directories = splitDirectories(manager_.getDirectoryList().asCstr());
  if (!input_.open(options_.file, directories, &error)) {
    return fail(error);
  }
  return ExitCode::success;
}

ExitCode Import::planColumns(const CsvReader& reader) {
  for (const std::string& name : reader.columnNames()) {
    columns_.push_back({name, std::nullopt, zvbTypeString, 0, 0});
  }
  values_.resize(columns_.size());
  ExitCode step = rejectRepeatedNames(reader);
  if (step == ExitCode::success) {
    step = applyGivenTypes();
  }
  if (step == ExitCode::success) {
    step = applyGivenWidths();
  }
  return step == ExitCode::success ? checkSortColumns() : step;
}

// Sorted by name, columns that the library takes for one are neighbours.
ExitCode Import::rejectRepeatedNames(const CsvReader& reader) {
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
        return names[left].compare(names[right], false) == 0;
      });
  return repeated == order.end()
             ? ExitCode::success
             : fail(reader.describeField(*std::next(repeated),
                                         "another column has this name, letter case aside"));
}

ExitCode Import::applyGivenTypes() {
  for (const GivenType& given : options_.types) {
    Column* column = findColumn(given.column);
    if (column == nullptr) {
      say("--type: there is no column " + quotedName(given.column));
      return ExitCode::usage;
    }
    column->givenType = given.type;
    column->type = given.type;
  }
  return ExitCode::success;
}

// A width is for texts only, so that it makes its column one of strings.
ExitCode Import::applyGivenWidths() {
  for (const GivenWidth& given : options_.widths) {
    Column* column = findColumn(given.column);
    if (column == nullptr) {
      say("--width: there is no column " + quotedName(given.column));
      return ExitCode::usage;
    }
    if (column->givenType.value_or(zvbTypeString) != zvbTypeString) {
      say("--width: column " + quotedName(given.column) + " is no string column");
      return ExitCode::usage;
    }
    column->givenType = zvbTypeString;
    column->width = given.bytes;
  }
  return ExitCode::success;
}

// Before the text is read through for its types.
ExitCode Import::checkSortColumns() {
  for (const SortKey& key : options_.sort.keys) {
    if (findColumn(key.column) == nullptr) {
      say("--sort: there is no column " + quotedName(key.column));
      return ExitCode::usage;
    }
  }
  return ExitCode::success;
}

Column* Import::findColumn(const std::string& name) {
  const auto found = std::find_if(columns_.begin(), columns_.end(), [&name](const Column& column) {
    return sameName(column.name, name);
  });
  return found == columns_.end() ? nullptr : &*found;
}

ExitCode Import::inferTypes(CsvReader* reader) {
  TypeInference inference(columns_.size());
  ReadResult result = reader->readRow();
  for (; result == ReadResult::row; result = reader->readRow()) {
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      if (!reader->isNull(column)) {
        inference.observe(column, reader->text(column));
      }
    }
  }
  std::string error = reader->errorText();
  if (result == ReadResult::failure || !input_.rewind(&error)) {
    return fail(error);
  }
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    columns_[column].type = columns_[column].givenType.value_or(inference.typeOf(column));
  }
  CsvReader again(&input_);
  return again.readHeader() ? makeTable(&again) : fail(again.errorText());
}

ExitCode Import::makeTable(CsvReader* reader) {
  reportColumns();
  const InterruptGuard guard;
  NewTable table(&manager_);
  ExitCode step = defineColumns(&table);
  if (step == ExitCode::success) {
    step = writeRows(reader, &table);
  }
  return step == ExitCode::success ? finishTable(&table) : step;
}

ExitCode Import::defineColumns(NewTable* table) {
  if (columns_.size() > std::numeric_limits<int>::max()) {
    return fail("there are too many columns");
  }
  const auto count = static_cast<int>(columns_.size());
  if (!table->create(count, options_.maxElementSize, options_.sort.keys.size())) {
    return fail(table->errorText());
  }
  for (int index = 0; index < count; ++index) {
    const Column& column = columns_[static_cast<std::size_t>(index)];
    if (!table->defineColumn(index, column.name, column.type, column.width)) {
      return fail(table->errorText());
    }
  }
  const bool isSorted = !options_.sort.keys.empty();
  return !isSorted || table->sortBy(options_.sort) ? ExitCode::success : fail(table->errorText());
}

ExitCode Import::writeRows(CsvReader* reader, NewTable* table) {
  ReadResult result = reader->readRow();
  for (; result == ReadResult::row; result = reader->readRow()) {
    const ExitCode step = convertRow(*reader);
    if (step != ExitCode::success) {
      return step;
    }
    if (!table->writeRow(values_.data())) {
      return fail(table->errorText());
    }
    if (InterruptGuard::interrupted()) {
      return fail(interruption);
    }
    ++rowCount_;
  }
  return result == ReadResult::end ? ExitCode::success : fail(reader->errorText());
}

ExitCode Import::convertRow(const CsvReader& reader) {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Column& column = columns_[i];
    if (reader.isNull(i)) {
      values_[i].setNull();
      continue;
    }
    const std::string_view text = reader.text(i);
    if (!readField(text, column.type, &values_[i])) {
      return fail(reader.describeField(i, std::string("the field is no ") + typeWord(column.type)));
    }
    if (column.width > 0 && text.size() > static_cast<std::size_t>(column.width)) {
      ++column.cutTexts;
    }
  }
  return ExitCode::success;
}

ExitCode Import::finishTable(NewTable* table) {
  if (!table->close()) {
    return fail(table->errorText());
  }
  const ExitCode step = table->finish();
  if (step == ExitCode::success) {
    reportRows();
  }
  return step;
}

void Import::reportColumns() const {
  for (const Column& column : columns_) {
    say("column " + quotedName(column.name) + ": " + typeWord(column.type) +
        (column.givenType.has_value() ? " (given)" : ""));
  }
}

void Import::reportRows() const {
  for (const Column& column : columns_) {
    if (column.cutTexts != 0) {
      say("column " + quotedName(column.name) + ": " + std::to_string(column.cutTexts) +
          (column.cutTexts == 1 ? " text was cut to " : " texts were cut to ") +
          std::to_string(column.width) + " bytes");
    }
  }
  say(std::to_string(rowCount_) + (rowCount_ == 1 ? " row" : " rows"));
}

}  // namespace

ExitCode runImport(ZvWorkTableManager& manager, const ImportOptions& options) {
  return Import(manager, options).run();
}

}  // namespace zvwttool
