#include "check/XelCsvCheckedTable.h"

#include "check/XelCsvMessage.h"

std::string XelCsvCheckedTable::describeColumn(long position) const {
  const auto index = static_cast<std::size_t>(position);
  if (index < headings.size() && !headings[index].empty()) return "column " + XelQuoted(headings[index]);
  return "the column at position " + std::to_string(position);
}
