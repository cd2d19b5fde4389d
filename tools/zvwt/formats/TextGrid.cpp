#include "formats/TextGrid.h"

#include <algorithm>

#include "text/DisplayText.h"

namespace zvwttool {
namespace {

constexpr std::size_t leastTextWidth = 8;
constexpr std::string_view leftOutMark = "\u2026";
constexpr std::string_view bold = "\x1B[1m";
constexpr std::string_view dim = "\x1B[2m";
constexpr std::string_view plain = "\x1B[0m";

}  // namespace

/// Blanks are written only before something else, so that no line ends with some.
class TextGrid::Line {
 public:
  explicit Line(OutputBuffer* output) : output_(output) {}

  void addBlanks(std::size_t count) { blanks_ += count; }

  void addText(std::string_view text, std::string_view style = {}) {
    if (text.empty()) {
      return;
    }
    output_->append(blanks_, ' ');
    blanks_ = 0;
    output_->append(style);
    output_->append(text);
    output_->append(style.empty() ? style : plain);
  }

  void end() { output_->append('\n'); }

 private:
  OutputBuffer* output_;
  std::size_t blanks_ = 0;
};

TextGrid::TextGrid(const std::vector<Kind>& columns, std::size_t widthLimit)
    : widthLimit_(widthLimit) {
  for (const Kind kind : columns) {
    columns_.push_back({.kind = kind});
  }
}

void TextGrid::addCell(std::string_view text, Style style) {
  Column& column = columns_[cells_.size() % columns_.size()];
  const std::size_t width = displayWidth(displayText(text, widthLimit_));
  cells_.push_back({std::string(text.substr(0, displayedSize(text, widthLimit_))), style});
  column.width = std::max(column.width, width);
  column.printedWidth = column.width;
  if (!isHeading(cells_.size() - 1)) {
    column.valueWidth = std::max(column.valueWidth, width);
  }
}

void TextGrid::addHeadings(const std::vector<std::string_view>& headings) {
  for (const std::string_view heading : headings) {
    addCell(heading);
  }
  addRule();
}

void TextGrid::addRule() {
  ruleCell_ = cells_.size();
  for (Column& column : columns_) {
    column.valueWidth = 0;
  }
}

std::size_t TextGrid::fit(std::size_t lineWidth) {
  std::vector<ColumnDemand> demands;
  for (const Column& column : columns_) {
    demands.push_back({column.width, leastWidth(column)});
  }
  const ColumnFit fit = fitColumns(demands, lineWidth);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    columns_[i].printedWidth = fit.widths[i];
  }
  firstLeftOut_ = fit.firstLeftOut;
  leftOut_ = fit.leftOut;
  return leftOut_;
}

/// A heading may be cut whatever is below it.
std::size_t TextGrid::leastWidth(const Column& column) {
  const std::size_t asText = std::min(column.width, leastTextWidth);
  return column.kind == Kind::text ? asText : std::max(column.valueWidth, asText);
}

void TextGrid::print(OutputBuffer* output, bool withStyles) const {
  if (columns_.empty()) {
    return;
  }
  for (std::size_t cell = 0; cell < cells_.size(); cell += columns_.size()) {
    if (cell == ruleCell_) {
      printRule(output);
    }
    printRow(cell, withStyles, output);
  }
  if (ruleCell_ == cells_.size()) {
    printRule(output);
  }
}

void TextGrid::printRule(OutputBuffer* output) const {
  Line line(output);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const bool isLeftOut = i - firstLeftOut_ < leftOut_;
    if (!isLeftOut || i == firstLeftOut_) {
      line.addText(std::string(isLeftOut ? leftOutMarkWidth : columns_[i].printedWidth, '-'));
      line.addBlanks(columnGap);
    }
  }
  line.end();
}

void TextGrid::printRow(std::size_t firstCell, bool withStyles, OutputBuffer* output) const {
  Line line(output);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const bool isLeftOut = i - firstLeftOut_ < leftOut_;
    if (!isLeftOut) {
      printCell(firstCell + i, withStyles, &line);
    } else if (i == firstLeftOut_) {
      line.addText(leftOutMark);
    }
    line.addBlanks(!isLeftOut || i == firstLeftOut_ ? columnGap : 0);
  }
  line.end();
}

void TextGrid::printCell(std::size_t index, bool withStyles, Line* line) const {
  const Cell& cell = cells_[index];
  const Column& column = columns_[index % columns_.size()];
  const std::string shown = displayText(cell.text, column.printedWidth);
  const std::size_t padding = column.printedWidth - displayWidth(shown);
  const bool isRight = column.kind == Kind::number;
  std::string_view style;
  if (withStyles && isHeading(index)) {
    style = bold;
  } else if (withStyles && cell.style == Style::dim) {
    style = dim;
  }
  line->addBlanks(isRight ? padding : 0);
  line->addText(shown, style);
  line->addBlanks(isRight ? 0 : padding);
}

bool TextGrid::isHeading(std::size_t cell) const {
  return ruleCell_ != noLimit && cell < ruleCell_;
}

}  // namespace zvwttool
