/// A table of texts in aligned columns.
#pragma once

#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "formats/ColumnFit.h"
#include "process/OutputBuffer.h"

namespace zvwttool {

class TextGrid {
 public:
  /// What a column has. Only texts may be cut so that the columns fit a line, unless it has no room
  /// for the first column alone.
  enum class Kind {
    text,
    word,    ///< to the left as texts are
    number,  ///< to the right
  };
  enum class Style { plain, dim };

  static constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

  /// Cells wider than `widthLimit` columns are cut.
  explicit TextGrid(const std::vector<Kind>& columns, std::size_t widthLimit = noLimit);

  /// Adds the next cell of the current row; a row ends with its last column. Only whole rows are
  /// printed.
  void addCell(std::string_view text, Style style = Style::plain);
  /// Adds a row of cells, and the rule below it.
  void addHeadings(const std::vector<std::string_view>& headings);
  /// Adds a row of dashes as wide as the columns; one in a grid. What is above it are headings.
  void addRule();

  /// Makes lines of at most so many columns of a terminal of what was added, if that can be: see
  /// fitColumns(). Returns how many of the grid's columns are left out.
  std::size_t fit(std::size_t lineWidth);
  /// With styles, sequences that a terminal takes make headings bold and other cells as they were
  /// added.
  void print(OutputBuffer* output, bool withStyles = false) const;

 private:
  struct Column {
    Kind kind;
    std::size_t width = 0;       // of its widest cell
    std::size_t valueWidth = 0;  // of its widest cell below the rule
    std::size_t printedWidth = 0;
  };
  struct Cell {
    std::string text;  // as it was added, as far as it can be seen
    Style style;
  };
  class Line;

  [[nodiscard]] static std::size_t leastWidth(const Column& column);
  void printRule(OutputBuffer* output) const;
  void printRow(std::size_t firstCell, bool withStyles, OutputBuffer* output) const;
  void printCell(std::size_t index, bool withStyles, Line* line) const;
  [[nodiscard]] bool isHeading(std::size_t cell) const;

  std::vector<Column> columns_;
  std::size_t widthLimit_;
  std::vector<Cell> cells_;
  std::size_t ruleCell_ = noLimit;  // that the rule stands before
  std::size_t firstLeftOut_ = 0;
  std::size_t leftOut_ = 0;
};

}  // namespace zvwttool
