/// Reads CSV row by row and takes it at its word.
///
/// Fields are separated by commas or what the form has in their place, rows by LF or CRLF; a field
/// in quotes may contain commas, line breaks and doubled quotes. Blanks belong to the field they
/// stand in. A field without quotes that is the form's text for null is null; if that is the empty
/// text, `""` is an empty text, and an empty line is a row of one null. A UTF-8 byte order mark at
/// the front is skipped; the last row may do without its line break.
///
/// Everything else is malformed and ends the reading: a quote where none can stand, a quoted field
/// that is never closed, a carriage return alone, a zero byte, and a row that has not as many
/// fields as the first line; unless fewer are allowed, which makes the missing ones null.
#pragma once

#include <csv.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/CsvForm.h"
#include "formats/CsvInput.h"
#include "process/ExitCode.h"

namespace zvwttool {

class CsvReader {
 public:
  enum class ShortRows { refused, filled };

  /// Reads from where the input stands; the input and the form outlive the reader. What is
  /// malformed is a Failure that names the input, the line and the column.
  CsvReader(CsvInput* input, const CsvForm& form, ShortRows shortRows);
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;
  ~CsvReader();

  /// Reads the header line, to be called first. Where the form has none, the columns are called c1,
  /// c2 and so on, as many as the first row has; and so is one of several columns that has no name.
  void readHeader();
  [[nodiscard]] const std::vector<std::string>& columnNames() const { return columnNames_; }
  /// The columns that the header line has no names for.
  [[nodiscard]] const std::vector<std::size_t>& namelessColumns() const { return namelessColumns_; }

  /// Reads the next row, whose fields are valid until the next call; false at the end.
  [[nodiscard]] bool readRow();
  [[nodiscard]] bool isNull(std::size_t column) const { return fields_[column].isNull; }
  [[nodiscard]] std::string_view text(std::size_t column) const {
    return {rowTexts_ + fields_[column].offset, fields_[column].size};
  }

  /// The line, from 1 on, on which the field begins.
  [[nodiscard]] std::int64_t line(std::size_t column) const { return fields_[column].line; }
  /// Short rows so far.
  [[nodiscard]] std::int64_t filledRows() const { return filledRows_; }

  /// The same Failure because of a field of the row just read.
  [[noreturn]] void failAtField(std::size_t column, std::string_view reason) const;

 private:
  struct Field {
    std::size_t offset;  // from rowTexts_ on
    std::size_t size;
    std::int64_t line;  // on which it begins, from 1
    bool isNull;
  };

  static void fieldCallback(void* text, std::size_t size, void* reader) noexcept;
  static void rowCallback(int terminator, void* reader) noexcept;

  [[nodiscard]] bool readPlainRow();
  [[nodiscard]] const char* readPlainField(const char* begin, std::int64_t* line);
  [[nodiscard]] bool parseRow();
  void takeField(const char* text, std::size_t size);
  void takeRowEnd(int terminator);
  void addField(const char* text, std::size_t size);
  [[nodiscard]] bool endsField(const char* text) const;
  void checkFieldCount(bool lineIsEmpty);
  [[nodiscard]] bool hasBytes() { return next_ != end_ || fillBuffer(); }
  [[nodiscard]] bool fillBuffer();
  void skipByteOrderMark();
  void feedPiece();
  void explainParserFailure(char refused);
  void explainRefusedMemory();
  void finish();
  void runOutOfMemory() noexcept;
  void throwFailure() const;
  void takeColumnNames();
  void numberColumns();
  void noteFailure(std::int64_t line, std::size_t column, std::string_view reason);
  [[nodiscard]] std::string describe(std::int64_t line, std::size_t column,
                                     std::string_view reason) const;

  CsvInput* input_;
  const CsvForm* form_;
  ShortRows shortRows_;
  csv_parser parser_;
  std::vector<std::string> columnNames_;
  std::vector<std::size_t> namelessColumns_;
  std::array<unsigned char, 256> byteEnds_{};  // for each byte, the kinds of plain text it ends
  std::vector<char> buffer_;                   // with a zero byte behind its last
  std::size_t next_ = 0;                       // in buffer_, the first byte that was not read yet
  std::size_t end_ = 0;                        // of the bytes in buffer_
  bool atFirstByte_ = true;
  std::int64_t line_ = 1;           // that is being read
  std::int64_t nextFieldLine_ = 1;  // on which the next field begins
  const char* rowTexts_ = nullptr;  // in which the row's fields lie
  std::vector<char> texts_;         // of the parser's fields, one after another
  std::vector<Field> fields_;
  bool rowComplete_ = false;
  bool rowIsWaiting_ = false;         // the first one, which was read for the number of columns
  bool fieldBegins_ = true;           // with the next byte for the parser
  bool isQuoted_ = false;             // the field that the parser is in
  bool afterCarriageReturn_ = false;  // one has ended a row, and its line feed is due
  std::size_t rowEndColumn_ = 0;      // the last column of the row that ended last
  std::int64_t filledRows_ = 0;
  std::string error_;  // what a callback of the parser, which must not throw, has found wrong
  ExitCode errorCode_ = ExitCode::damaged;
};

}  // namespace zvwttool
