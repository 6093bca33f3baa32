// Lines of cells as a table with aligned columns.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/Output.h"
#include "tools/Terminal.h"

namespace xeltools {

// Made in two passes over the cells, so that no line has to be kept: the first shows every line to observe(), the second
// to write(). Cells are printable text.
class AlignedTable {
 public:
  struct Heading {
    std::string name;
    Look look = Look::Strong;
    bool isAlignedRight = false;  // else that depends on what the column holds
    bool isFaint = false;         // its cells stand back
  };

  explicit AlignedTable(std::vector<Heading> headings);

  // What columns beyond the headings are called, by their index; nothing unless it is said.
  void nameOthers(std::function<std::string(std::size_t)> name) { nameOfOther = std::move(name); }

  // A line of the first pass. Cells beyond the headings make more columns.
  void observe(const std::vector<std::string>& cells);

  // The width of a terminal: columns become narrower, and what does not fit at all is left out. Without it a cell that
  // is much longer than the others stands out and nothing is cut.
  void limitWidth(std::size_t columns);

  void writeHeadings(Output& output, const Painter& painter) const;
  void write(Output& output, const Painter& painter, const std::vector<std::string>& cells) const;

 private:
  struct Layout {
    std::size_t width = 0;
    bool isNumeric = true;  // every cell seen is empty or a number
    bool hasCells = false;  // that are not empty
  };

  // look answers how the cell of a column looks.
  template <class LookOf>
  void writeRow(Output& output, const Painter& painter, const std::vector<std::string>& cells, LookOf&& look) const;
  bool isAlignedRight(std::size_t column) const;
  std::size_t getTotalWidth() const;

  std::vector<Heading> headings;
  std::vector<Layout> layouts;
  std::function<std::string(std::size_t)> nameOfOther;
  std::size_t shown;   // columns, from the left
  bool isCut = false;  // to the terminal's width
};

}  // namespace xeltools
