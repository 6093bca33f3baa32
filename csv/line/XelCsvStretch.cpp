#include "csv/line/XelCsvStretch.h"

#include <algorithm>

long XelCsvStretch::find() noexcept {
  const XelCsvSpan rest = file.getRest();
  const long at = file.getOffset();
  // The file may have read on, or moved its bytes, since the stretch was found.
  const bool isThere = bytes != nullptr && rest.end == end && rest.begin >= bytes && rest.begin - bytes == at - offset;
  if (isThere) {
    while (first < count && starts[first] < at - offset) ++first;
    if (first < count && starts[first] == at - offset) return count - first;
  }
  bytes = rest.begin;
  end = rest.end;
  offset = at;
  first = 0;
  count = XelFindLineStarts(bytes, std::min(rest.getLength(), XelStretchSize), starts);
  return count;
}

long XelCsvStretch::countUpTo(long last) const noexcept {
  const auto* const from = starts + first;
  const auto* const to = starts + count;
  if (from == to || last - offset >= to[-1]) return to - from;
  return std::upper_bound(from, to, last - offset) - from;
}

void XelCsvStretch::goOn(long lines) noexcept {
  if (lines == 0) return;
  first += lines;
  file.goOn(bytes + starts[first - 1], bytes + starts[first]);
}
