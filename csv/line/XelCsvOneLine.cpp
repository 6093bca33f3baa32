#include "csv/line/XelCsvOneLine.h"

#include <cstring>

#include "csv/line/XelCsvFormat.h"

namespace {

constexpr long LongestLine = XelLineSize - 1;

// Where the line behind a number of bytes ends among those that came, null when it does not.
const char* findEnd(const char* begin, long came) noexcept {
  const void* feed = came > 0 ? std::memchr(begin, '\n', static_cast<std::size_t>(came)) : nullptr;
  return feed == nullptr ? nullptr : static_cast<const char*>(feed) + 1;
}

}  // namespace

XelCsvSpan XelReadOneLine(XelCsvFile& file, char* block) noexcept {
  char* const near = block + XelLineSize - XelShortLine - XelTextPadding;
  const long came = file.read(near, XelShortLine);
  std::memset(near + came, 0, XelTextPadding);  // what a formatter finds there is the same in every run
  if (const char* end = findEnd(near, came)) return {near, end};
  if (came < XelShortLine) return {near, file.hasFailed() ? near : near + came};
  std::memcpy(block, near, XelShortLine);
  const long others = file.read(block + XelShortLine, LongestLine - XelShortLine);
  if (const char* end = findEnd(block + XelShortLine, others)) return {block, end};
  const bool isCut = others < LongestLine - XelShortLine && file.hasFailed();
  return {block, isCut ? block : block + XelShortLine + others};
}
