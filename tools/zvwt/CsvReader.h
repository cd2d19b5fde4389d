/// Reads CSV row by row and takes it at its word.
///
/// Fields are separated by commas, rows by LF or CRLF; a field in quotes may contain commas, line
/// breaks and doubled quotes. Blanks belong to the field they stand in. An empty field without
/// quotes is null, `""` is an empty text, and so an empty line is a row of one null. A UTF-8 byte
/// order mark before the header line is skipped; the last row may do without its line break.
///
/// Everything else is malformed and ends the reading: a quote where none can stand, a quoted field
/// that is never closed, a carriage return alone, a zero byte, and a row that has not as many
/// fields as the header line.
#pragma once

#include <csv.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "CsvInput.h"

namespace zvwttool {

enum class ReadResult { row, end, failure };

class CsvReader {
 public:
  /// Reads from where the input stands; the input outlives the reader.
  explicit CsvReader(CsvInput* input);
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;
  ~CsvReader();

  /// Reads the header line, to be called first. False with the reason in errorText().
  [[nodiscard]] bool readHeader();
  [[nodiscard]] const std::vector<std::string>& columnNames() const { return columnNames_; }

  /// Reads the next row; its fields are valid until the next call.
  [[nodiscard]] ReadResult readRow();
  [[nodiscard]] bool isNull(std::size_t column) const { return fields_[column].isNull; }
  [[nodiscard]] std::string_view text(std::size_t column) const {
    return {texts_.data() + fields_[column].offset, fields_[column].size};
  }

  /// Why the reading ended; names the input, the line and the column.
  [[nodiscard]] const std::string& errorText() const { return error_; }
  /// The same words about a field of the row just read.
  [[nodiscard]] std::string describeField(std::size_t column, std::string_view reason) const;

 private:
  struct Field {
    std::size_t offset;  // in texts_
    std::size_t size;
    std::int64_t line;  // on which it begins, from 1
    bool isNull;
  };

  static void fieldCallback(void* text, std::size_t size, void* reader) noexcept;
  static void rowCallback(int terminator, void* reader) noexcept;

  void takeField(const char* text, std::size_t size);
  void takeRowEnd(int terminator);
  void addField(const char* text, std::size_t size);
  void checkFieldCount();
  [[nodiscard]] bool fillBuffer();
  void skipByteOrderMark();
  void feedPiece();
  void explainParserFailure(char refused);
  [[nodiscard]] ReadResult finish();
  [[nodiscard]] bool checkColumnNames();
  void fail(std::int64_t line, std::size_t column, std::string_view reason);
  [[nodiscard]] std::string describe(std::int64_t line, std::size_t column,
                                     std::string_view reason) const;

  CsvInput* input_;
  csv_parser parser_;
  std::vector<std::string> columnNames_;
  std::vector<char> buffer_;
  std::size_t next_ = 0;  // in buffer_, the first byte that the parser has not seen
  std::size_t end_ = 0;   // of the bytes in buffer_
  bool atFirstByte_ = true;
  std::int64_t line_ = 1;           // that the parser is in
  std::int64_t nextFieldLine_ = 1;  // on which the next field begins
  std::vector<char> texts_;         // of the row's fields, one after another
  std::vector<Field> fields_;
  bool rowComplete_ = false;
  bool afterCarriageReturn_ = false;  // one has ended a row, and its line feed is due
  std::size_t rowEndColumn_ = 0;      // the last column of the row that ended last
  std::string error_;
};

}  // namespace zvwttool
