#include "csv/line/XelCsvOneLine.h"

#include <cstring>
#include <initializer_list>

#include "csv/line/XelCsvFormat.h"

namespace {

constexpr long LongestLine = XelLineSize - 1;
constexpr long FirstRead = 512;  // most lines end within it

}  // namespace

long XelReadOneLine(XelCsvFile& file, char* block) noexcept {
  long there = 0;
  for (const long wanted : {FirstRead, LongestLine}) {
    const long came = file.read(block + there, wanted - there);
    const void* feed = came > 0 ? std::memchr(block + there, '\n', static_cast<std::size_t>(came)) : nullptr;
    if (feed != nullptr) return static_cast<const char*>(feed) - block + 1;
    there += came;
    if (there < wanted) return file.hasFailed() ? 0 : there;
  }
  return LongestLine;
}
