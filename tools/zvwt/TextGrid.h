/// A table of texts in aligned columns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "OutputBuffer.h"

namespace zvwttool {

class TextGrid {
 public:
  enum class Align { left, right };

  /// Cells wider than `widthLimit` columns are cut.
  TextGrid(const std::vector<Align>& columns, std::size_t widthLimit);

  /// Adds the next cell of the current row; a row ends with its last column. Only whole rows are
  /// printed.
  void addCell(std::string_view text);
  /// Adds a row of dashes as wide as the columns; one in a grid.
  void addRule();
  void print(OutputBuffer* output) const;

 private:
  struct Column {
    Align align;
    std::size_t width = 0;
  };

  void printRule(OutputBuffer* output) const;
  void printRow(const std::string* cells, OutputBuffer* output) const;

  std::vector<Column> columns_;
  std::size_t widthLimit_;
  std::vector<std::string> cells_;
  std::size_t ruleCell_ = static_cast<std::size_t>(-1);  // that the rule stands before
};

}  // namespace zvwttool
