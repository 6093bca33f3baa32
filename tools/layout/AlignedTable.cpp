#include "tools/layout/AlignedTable.h"

#include <algorithm>

#include "tools/text/Number.h"
#include "tools/text/Width.h"

namespace xeltools {

namespace {

constexpr std::size_t Gap = 2;  // blanks between columns
constexpr const char* Ellipsis = "\xE2\x80\xA6";
constexpr const char* Rule = "\xE2\x94\x80";

// Cells wider than this do not widen their column where nothing is cut: one long text would drive all others apart.
constexpr std::size_t WidestUncut = 60;

// Columns become no narrower than this on a terminal.
constexpr std::size_t Narrowest = 4;

}  // namespace

AlignedTable::AlignedTable(std::vector<Heading> given)
    : headings(std::move(given)), layouts(headings.size()), shown(headings.size()) {
  for (std::size_t column = 0; column < headings.size(); ++column) {
    layouts[column].width = std::min(getWidth(headings[column].name), WidestUncut);
  }
}

void AlignedTable::observe(const std::vector<std::string>& cells) {
  while (headings.size() < cells.size()) {
    headings.push_back({nameOfOther ? nameOfOther(headings.size()) : "", Look::Strong});
    layouts.emplace_back();
    layouts.back().width = std::min(getWidth(headings.back().name), WidestUncut);
  }
  shown = headings.size();
  for (std::size_t column = 0; column < cells.size(); ++column) {
    Layout& layout = layouts[column];
    layout.width = std::max(layout.width, std::min(getWidth(cells[column]), WidestUncut));
    if (cells[column].empty()) continue;
    layout.hasCells = true;
    layout.isNumeric = layout.isNumeric && isNumber(cells[column]);
  }
}

bool AlignedTable::isAlignedRight(std::size_t column) const {
  return headings[column].isAlignedRight || (layouts[column].isNumeric && layouts[column].hasCells);
}

std::size_t AlignedTable::getTotalWidth() const {
  std::size_t total = shown == 0 ? 0 : (shown - 1) * Gap;
  for (std::size_t column = 0; column < shown; ++column) total += layouts[column].width;
  return total;
}

// The widest column gives way first, the last of several; when all are narrow the rightmost ones go.
void AlignedTable::limitWidth(std::size_t columns) {
  isCut = true;
  while (getTotalWidth() > columns) {
    Layout* widest = layouts.data();
    for (std::size_t column = 1; column < shown; ++column) {
      if (layouts[column].width >= widest->width) widest = &layouts[column];
    }
    if (widest->width > Narrowest) {
      --widest->width;
    } else if (shown > 1) {
      const std::size_t roomForEllipsis = Gap + 1;
      if (shown == headings.size()) columns = columns > roomForEllipsis ? columns - roomForEllipsis : 0;
      --shown;
    } else {
      break;
    }
  }
}

// Blanks behind the last text of a line are left out.
template <class LookOf>
void AlignedTable::writeRow(Output& output, const Painter& painter, const std::vector<std::string>& cells,
                            LookOf&& look) const {
  std::string row;
  std::size_t blanks = 0;  // not written yet
  for (std::size_t column = 0; column < shown; ++column) {
    const std::size_t width = layouts[column].width;
    std::string_view cell;
    if (column < cells.size()) cell = cells[column];
    std::size_t used = getWidth(cell);
    std::string cut;
    if (isCut && used > width) {
      cut = cutToWidth(cell, width);
      cell = cut;
      used = getWidth(cell);
    }
    const std::size_t padding = used < width ? width - used : 0;
    if (column > 0) blanks += Gap;
    if (isAlignedRight(column)) blanks += padding;
    if (!cell.empty()) {
      row.append(blanks, ' ');
      blanks = 0;
      if (painter.isOn()) {
        row += painter.paint(cell, look(column));
      } else {
        row += cell;
      }
    }
    if (!isAlignedRight(column)) blanks += padding;
  }
  if (shown < headings.size()) {
    row.append(blanks + Gap, ' ');
    row += painter.paint(Ellipsis, Look::Faint);
  }
  output.writeLine(row);
}

void AlignedTable::writeHeadings(Output& output, const Painter& painter) const {
  std::vector<std::string> names;
  std::vector<std::string> rules;
  for (std::size_t column = 0; column < headings.size(); ++column) {
    names.push_back(headings[column].name);
    std::string rule;
    for (std::size_t cell = 0; cell < layouts[column].width; ++cell) rule += Rule;
    rules.push_back(rule);
  }
  writeRow(output, painter, names, [&](std::size_t column) { return headings[column].look; });
  writeRow(output, painter, rules, [](std::size_t) { return Look::Faint; });
}

void AlignedTable::write(Output& output, const Painter& painter, const std::vector<std::string>& cells) const {
  writeRow(output, painter, cells,
           [&](std::size_t column) { return headings[column].isFaint ? Look::Faint : Look::Plain; });
}

}  // namespace xeltools
