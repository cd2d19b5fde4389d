#include "CsvReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "DisplayText.h"
#include "base/ZvbText.h"

namespace zvwttool {
namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;
constexpr std::size_t parserBlockSize = 4096;  // by which the parser's field buffer grows
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// Strict, because what is no CSV must not become data; every line break reported and unquoted empty
// fields told apart, because the parser would drop empty lines and mix up null and empty.
constexpr unsigned char parserOptions =
    CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL | CSV_EMPTY_IS_NULL;

int isTrimmed(unsigned char /*byte*/) { return 0; }

// Bounds what a quote that is never closed makes the parser collect: no table takes a longer text.
void* resizeField(void* block, std::size_t size) {
  return size > ZvbText::maximumSize ? nullptr : std::realloc(block, size);
}

}  // namespace

CsvReader::CsvReader(CsvInput* input) : input_(input), parser_(), buffer_(bufferSize) {
  (void)csv_init(&parser_, parserOptions);  // fails for a null pointer only
  csv_set_space_func(&parser_, isTrimmed);
  csv_set_realloc_func(&parser_, resizeField);
  csv_set_blk_size(&parser_, parserBlockSize);
}

CsvReader::~CsvReader() { csv_free(&parser_); }

bool CsvReader::readHeader() {
  const ReadResult result = readRow();
  if (result == ReadResult::end) {
    error_ = input_->name() + ": there is no header line";
  }
  return result == ReadResult::row && checkColumnNames();
}

bool CsvReader::checkColumnNames() {
  for (std::size_t column = 0; column < fields_.size(); ++column) {
    if (text(column).empty()) {
      fail(fields_[column].line, column, "the column has no name");
      return false;
    }
  }
  for (std::size_t column = 0; column < fields_.size(); ++column) {
    columnNames_.emplace_back(text(column));
  }
  return true;
}

ReadResult CsvReader::readRow() {
  texts_.clear();
  fields_.clear();
  rowComplete_ = false;
  while (error_.empty() && !rowComplete_) {
    if (next_ == end_ && !fillBuffer()) {
      return finish();
    }
    feedPiece();
  }
  return error_.empty() ? ReadResult::row : ReadResult::failure;
}

bool CsvReader::fillBuffer() {
  next_ = 0;
  end_ = input_->read(buffer_.data(), buffer_.size(), &error_);
  if (atFirstByte_) {
    skipByteOrderMark();
  }
  return next_ != end_ && error_.empty();
}

void CsvReader::skipByteOrderMark() {
  atFirstByte_ = false;
  if (std::string_view(buffer_.data(), end_).starts_with(byteOrderMark)) {
    next_ = byteOrderMark.size();
  }
}

// One line at most, so that the parser never runs past the row and the line number is known.
void CsvReader::feedPiece() {
  const char* piece = buffer_.data() + next_;
  const auto* lineFeed = static_cast<const char*>(std::memchr(piece, '\n', end_ - next_));
  const std::size_t size =
      lineFeed != nullptr ? static_cast<std::size_t>(lineFeed - piece) + 1 : end_ - next_;
  const std::size_t parsed = csv_parse(&parser_, piece, size, fieldCallback, rowCallback, this);
  if (parsed != size) {
    explainParserFailure(piece[parsed]);
    return;
  }
  next_ += size;
  line_ += lineFeed != nullptr ? 1 : 0;
}

void CsvReader::explainParserFailure(char refused) {
  const std::size_t column = fields_.size();
  if (csv_error(&parser_) != CSV_EPARSE) {
    fail(nextFieldLine_, column, "the field is too long for the memory");
  } else if (refused == '"') {
    fail(line_, column, "a quote stands inside a field that does not begin with one");
  } else {
    fail(line_, column, "the closing quote is followed by more text");
  }
}

ReadResult CsvReader::finish() {
  if (!error_.empty()) {
    return ReadResult::failure;
  }
  if (csv_fini(&parser_, fieldCallback, rowCallback, this) != 0) {
    fail(nextFieldLine_, fields_.size(), "the field begins with a quote that is never closed");
  } else if (afterCarriageReturn_) {
    fail(line_, rowEndColumn_, "a carriage return stands without its line feed");
  }
  if (!error_.empty()) {
    return ReadResult::failure;
  }
  return rowComplete_ ? ReadResult::row : ReadResult::end;
}

void CsvReader::fieldCallback(void* text, std::size_t size, void* reader) noexcept {
  auto* self = static_cast<CsvReader*>(reader);
  try {
    self->takeField(static_cast<const char*>(text), size);
  } catch (const std::bad_alloc&) {
    self->error_ = "out of memory";
  }
}

void CsvReader::rowCallback(int terminator, void* reader) noexcept {
  auto* self = static_cast<CsvReader*>(reader);
  try {
    self->takeRowEnd(terminator);
  } catch (const std::bad_alloc&) {
    self->error_ = "out of memory";
  }
}

void CsvReader::takeField(const char* text, std::size_t size) {
  if (afterCarriageReturn_) {
    fail(line_, rowEndColumn_, "a carriage return stands without its line feed");
    return;
  }
  if (text != nullptr && std::memchr(text, '\0', size) != nullptr) {
    fail(nextFieldLine_, fields_.size(), "the field contains a zero byte");
    return;
  }
  addField(text, size);
  nextFieldLine_ = line_;
}

void CsvReader::addField(const char* text, std::size_t size) {
  fields_.push_back({texts_.size(), size, nextFieldLine_, text == nullptr});
  texts_.insert(texts_.end(), text, text + size);
}

void CsvReader::takeRowEnd(int terminator) {
  const bool endedBefore = afterCarriageReturn_;
  afterCarriageReturn_ = terminator == CSV_CR;
  if (endedBefore && afterCarriageReturn_) {
    fail(line_, rowEndColumn_, "a carriage return stands without its line feed");
    return;
  }
  if (!endedBefore) {
    if (fields_.empty()) {
      addField(nullptr, 0);
    }
    checkFieldCount();
    rowEndColumn_ = fields_.size() - 1;
    rowComplete_ = true;
  }
  nextFieldLine_ = line_ + 1;
}

void CsvReader::checkFieldCount() {
  const std::size_t expected = columnNames_.size();
  const std::size_t count = fields_.size();
  if (expected == 0 || count == expected) {
    return;
  }
  fail(line_, std::min(count, expected),
       "the row has " + std::to_string(count) + (count == 1 ? " field" : " fields") +
           ", the header line has " + std::to_string(expected));
}

void CsvReader::fail(std::int64_t line, std::size_t column, std::string_view reason) {
  if (error_.empty()) {
    error_ = describe(line, column, reason);
  }
}

std::string CsvReader::describeField(std::size_t column, std::string_view reason) const {
  return describe(fields_[column].line, column, reason);
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
