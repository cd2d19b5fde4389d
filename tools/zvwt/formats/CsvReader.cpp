#include "formats/CsvReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "base/ZvbText.h"
#include "process/Failure.h"
#include "text/Counted.h"
#include "text/DisplayText.h"

namespace zvwttool {
namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;
constexpr std::size_t parserBlockSize = 4096;  // by which the parser's field buffer grows

// Strict, because what is no CSV must not become data; every line break reported and unquoted empty
// fields told apart, because the parser would drop empty lines and mix up null and empty.
constexpr unsigned char parserOptions =
    CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL | CSV_EMPTY_IS_NULL;

// What a byte may end, in CsvReader::byteEnds_: a text without quotes, and one in quotes.
constexpr unsigned char endsUnquoted = 1;
constexpr unsigned char endsQuoted = 2;

std::string numberedName(std::size_t column) { return 'c' + std::to_string(column + 1); }

unsigned char code(char byte) { return static_cast<unsigned char>(byte); }

int isTrimmed(unsigned char /*byte*/) { return 0; }

// Bounds what a quote that is never closed makes the parser collect: no table takes a longer text.
void* resizeField(void* block, std::size_t size) {
  return size > ZvbText::maximumSize ? nullptr : std::realloc(block, size);
}

}  // namespace

CsvReader::CsvReader(CsvInput* input, const CsvForm& form, ShortRows shortRows)
    : input_(input), form_(&form), shortRows_(shortRows), parser_(), buffer_(bufferSize + 1) {
  (void)csv_init(&parser_, parserOptions);  // fails for a null pointer only
  csv_set_delim(&parser_, code(form.delimiter));
  csv_set_space_func(&parser_, isTrimmed);
  csv_set_realloc_func(&parser_, resizeField);
  csv_set_blk_size(&parser_, parserBlockSize);
  for (const char byte : {form.delimiter, '"', '\r', '\n', '\0'}) {
    byteEnds_[code(byte)] |= endsUnquoted;
  }
  for (const char byte : {'"', '\0'}) {
    byteEnds_[code(byte)] |= endsQuoted;
  }
}

CsvReader::~CsvReader() { csv_free(&parser_); }

void CsvReader::readHeader() {
  if (!readRow()) {
    throw Failure(ExitCode::damaged,
                  input_->name() + (form_->hasHeader ? ": there is no header line"
                                                     : ": there is no row that has columns"));
  }
  if (form_->hasHeader) {
    takeColumnNames();
  } else {
    numberColumns();
  }
}

void CsvReader::numberColumns() {
  for (std::size_t column = 0; column < fields_.size(); ++column) {
    columnNames_.push_back(numberedName(column));
  }
  rowIsWaiting_ = true;
}

void CsvReader::takeColumnNames() {
  if (fields_.size() == 1 && text(0).empty()) {
    failAtField(0, "the column has no name");
  }
  for (std::size_t column = 0; column < fields_.size(); ++column) {
    if (text(column).empty()) {
      namelessColumns_.push_back(column);
    }
    columnNames_.push_back(text(column).empty() ? numberedName(column) : std::string(text(column)));
  }
}

bool CsvReader::readRow() {
  if (rowIsWaiting_) {
    rowIsWaiting_ = false;
    return true;
  }
  fields_.clear();
  // Most rows are plain, and telling so is several times as fast as the parser.
  return (hasBytes() && !afterCarriageReturn_ && readPlainRow()) || parseRow();
}

/// Reads the next row where it lies. False, and nothing is read, when it is not whole in the buffer
/// or has anything in it that is for the parser: a doubled quote, or what is malformed.
bool CsvReader::readPlainRow() {
  const char* next = buffer_.data() + next_;
  std::int64_t line = line_;
  const bool lineIsEmpty = *next == '\n' || *next == '\r';
  rowTexts_ = buffer_.data();
  do {
    next = readPlainField(next, &line);
    if (next == nullptr) {
      fields_.clear();
      return false;
    }
  } while (*next++ == form_->delimiter);
  next_ = static_cast<std::size_t>(next - buffer_.data()) + (next[-1] == '\r' ? 1 : 0);
  line_ = line;
  checkFieldCount(lineIsEmpty);
  throwFailure();
  nextFieldLine_ = ++line_;
  return true;
}

/// True for a delimiter, and for the line break of a row.
bool CsvReader::endsField(const char* text) const {
  return *text == form_->delimiter || *text == '\n' || (*text == '\r' && text[1] == '\n');
}

/// Returns where the field ends: at its delimiter, or at the line break of the row. Null when it is
/// for the parser.
const char* CsvReader::readPlainField(const char* begin, std::int64_t* line) {
  const bool isQuoted = *begin == '"';
  const std::int64_t firstLine = *line;
  begin += isQuoted ? 1 : 0;
  const char* end = begin;
  while ((byteEnds_[code(*end)] & (isQuoted ? endsQuoted : endsUnquoted)) == 0) {
    ++end;
  }
  if (isQuoted) {
    if (*end != '"') {
      return nullptr;
    }
    *line += std::count(begin, end, '\n');
  }
  const char* const behind = end + (isQuoted ? 1 : 0);
  if (!endsField(behind)) {
    return nullptr;
  }
  const std::string_view text(begin, static_cast<std::size_t>(end - begin));
  const auto offset = static_cast<std::size_t>(begin - rowTexts_);
  fields_.push_back({offset, text.size(), firstLine, !isQuoted && text == form_->null});
  return behind;
}

bool CsvReader::parseRow() {
  texts_.clear();
  rowComplete_ = false;
  while (!rowComplete_) {
    if (!hasBytes()) {
      finish();
      rowTexts_ = texts_.data();
      return rowComplete_;
    }
    feedPiece();
    throwFailure();
  }
  rowTexts_ = texts_.data();
  return true;
}

bool CsvReader::fillBuffer() {
  next_ = 0;
  end_ = input_->read(buffer_.data(), bufferSize);
  buffer_[end_] = '\0';
  if (atFirstByte_) {
    skipByteOrderMark();
  }
  return next_ != end_;
}

void CsvReader::skipByteOrderMark() {
  atFirstByte_ = false;
  if (std::string_view(buffer_.data(), end_).starts_with(byteOrderMark)) {
    next_ = byteOrderMark.size();
  }
}

// One line at most, so that the parser never runs past the row and the line number is known; and
// one field at most, so that it is known whether the field began with a quote.
void CsvReader::feedPiece() {
  const char* const piece = buffer_.data() + next_;
  const char* const end = buffer_.data() + end_;
  const char* const last = std::find_if(
      piece, end, [this](char byte) { return byte == form_->delimiter || byte == '\n'; });
  const auto size = static_cast<std::size_t>(last - piece) + (last != end ? 1 : 0);
  if (fieldBegins_) {
    fieldBegins_ = false;
    isQuoted_ = *piece == '"';
  }
  const std::size_t parsed = csv_parse(&parser_, piece, size, fieldCallback, rowCallback, this);
  if (parsed != size) {
    explainParserFailure(piece[parsed]);
    return;
  }
  next_ += size;
  line_ += last != end && *last == '\n' ? 1 : 0;
}

void CsvReader::explainParserFailure(char refused) {
  const std::size_t column = fields_.size();
  if (csv_error(&parser_) != CSV_EPARSE) {
    explainRefusedMemory();
  } else if (refused == '"') {
    noteFailure(line_, column, "a quote stands inside a field that does not begin with one");
  } else {
    noteFailure(line_, column, "the closing quote is followed by more text");
  }
}

void CsvReader::explainRefusedMemory() {
  const std::size_t column = fields_.size();
  if (csv_get_buffer_size(&parser_) >= ZvbText::maximumSize) {
    noteFailure(nextFieldLine_, column, "the field is longer than a text can be");
  } else {
    noteFailure(nextFieldLine_, column, "there is no memory for the field");
    errorCode_ = ExitCode::inputOutput;
  }
}

void CsvReader::finish() {
  if (csv_fini(&parser_, fieldCallback, rowCallback, this) != 0) {
    noteFailure(nextFieldLine_, fields_.size(),
                "the field begins with a quote that is never closed");
  } else if (afterCarriageReturn_) {
    noteFailure(line_, rowEndColumn_, "a carriage return stands without its line feed");
  }
  throwFailure();
}

/// The text is short enough to lie in the string itself.
void CsvReader::runOutOfMemory() noexcept {
  error_ = "out of memory";
  errorCode_ = ExitCode::inputOutput;
}

void CsvReader::throwFailure() const {
  if (!error_.empty()) {
    throw Failure(errorCode_, error_);
  }
}

void CsvReader::fieldCallback(void* text, std::size_t size, void* reader) noexcept {
  auto* self = static_cast<CsvReader*>(reader);
  try {
    self->takeField(static_cast<const char*>(text), size);
  } catch (const std::bad_alloc&) {
    self->runOutOfMemory();
  }
}

void CsvReader::rowCallback(int terminator, void* reader) noexcept {
  auto* self = static_cast<CsvReader*>(reader);
  try {
    self->takeRowEnd(terminator);
  } catch (const std::bad_alloc&) {
    self->runOutOfMemory();
  }
}

void CsvReader::takeField(const char* text, std::size_t size) {
  if (afterCarriageReturn_) {
    noteFailure(line_, rowEndColumn_, "a carriage return stands without its line feed");
    return;
  }
  if (text != nullptr && std::memchr(text, '\0', size) != nullptr) {
    noteFailure(nextFieldLine_, fields_.size(), "the field contains a zero byte");
    return;
  }
  addField(text, size);
  nextFieldLine_ = line_;
  fieldBegins_ = true;
}

/// The parser has a null pointer for an empty field without quotes.
void CsvReader::addField(const char* text, std::size_t size) {
  const bool isNull =
      (text == nullptr || !isQuoted_) && std::string_view(text, size) == form_->null;
  fields_.push_back({texts_.size(), size, nextFieldLine_, isNull});
  texts_.insert(texts_.end(), text, text + size);
}

void CsvReader::takeRowEnd(int terminator) {
  const bool endedBefore = afterCarriageReturn_;
  afterCarriageReturn_ = terminator == CSV_CR;
  if (endedBefore && afterCarriageReturn_) {
    noteFailure(line_, rowEndColumn_, "a carriage return stands without its line feed");
    return;
  }
  if (!endedBefore) {
    const bool lineIsEmpty = fields_.empty();
    if (lineIsEmpty) {
      addField(nullptr, 0);
    }
    checkFieldCount(lineIsEmpty);
    rowEndColumn_ = fields_.size() - 1;
    rowComplete_ = true;
  }
  nextFieldLine_ = line_ + 1;
  fieldBegins_ = true;
}

void CsvReader::checkFieldCount(bool lineIsEmpty) {
  const std::size_t expected = columnNames_.size();
  const std::size_t count = fields_.size();
  if (expected == 0 || count == expected) {
    return;
  }
  if (count < expected && shortRows_ == ShortRows::filled) {
    fields_.resize(expected, {0, 0, line_, true});
    ++filledRows_;
    return;
  }
  std::string reason = "the line is empty";
  if (!lineIsEmpty) {
    reason = "the row has " + counted(static_cast<std::int64_t>(count), "field") +
             (form_->hasHeader ? ", the header line has " : ", the first row has ") +
             std::to_string(expected);
  }
  if (count < expected) {
    reason += "; --ragged takes such rows";
  }
  noteFailure(line_, lineIsEmpty ? 0 : std::min(count, expected), reason);
}

void CsvReader::noteFailure(std::int64_t line, std::size_t column, std::string_view reason) {
  if (error_.empty()) {
    error_ = describe(line, column, reason);
  }
}

void CsvReader::failAtField(std::size_t column, std::string_view reason) const {
  throw Failure(ExitCode::damaged, describe(fields_[column].line, column, reason));
}

std::string CsvReader::describe(std::int64_t line, std::size_t column,
                                std::string_view reason) const {
  std::string text =
      input_->name() + ": line " + std::to_string(line) + ", column " + std::to_string(column + 1);
  if (column < columnNames_.size()) {
    text += ' ' + quotedName(columnNames_[column]);
  }
  text += ": ";
  text += reason;
  return text;
}

}  // namespace zvwttool
