#include "TextGrid.h"

#include <algorithm>

#include "DisplayText.h"

namespace zvwttool {
namespace {

constexpr std::size_t gap = 2;  // blanks between columns

}  // namespace

TextGrid::TextGrid(const std::vector<Align>& columns, std::size_t widthLimit)
    : widthLimit_(widthLimit) {
  for (const Align align : columns) {
    columns_.push_back({align, 0});
  }
}

void TextGrid::addCell(std::string_view text) {
  Column& column = columns_[cells_.size() % columns_.size()];
  cells_.push_back(displayText(text, widthLimit_));
  column.width = std::max(column.width, displayWidth(cells_.back()));
}

void TextGrid::addRule() { ruleCell_ = cells_.size(); }

void TextGrid::print(OutputBuffer* output) const {
  for (std::size_t cell = 0; cell < cells_.size(); cell += columns_.size()) {
    if (cell == ruleCell_) {
      printRule(output);
    }
    printRow(&cells_[cell], output);
  }
  if (ruleCell_ == cells_.size()) {
    printRule(output);
  }
}

void TextGrid::printRule(OutputBuffer* output) const {
  std::vector<std::string> dashes;
  for (const Column& column : columns_) {
    dashes.emplace_back(column.width, '-');
  }
  printRow(dashes.data(), output);
}

// Blanks are written only before something else, so that no line ends with some.
void TextGrid::printRow(const std::string* cells, OutputBuffer* output) const {
  std::size_t blanks = 0;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::size_t padding = columns_[i].width - displayWidth(cells[i]);
    const bool isRight = columns_[i].align == Align::right;
    blanks += isRight ? padding : 0;
    if (!cells[i].empty()) {
      output->append(blanks, ' ');
      output->append(cells[i]);
      blanks = 0;
    }
    blanks += gap + (isRight ? 0 : padding);
  }
  output->append('\n');
}

}  // namespace zvwttool
