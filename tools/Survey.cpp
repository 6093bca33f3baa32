#include "tools/Survey.h"

#include <array>
#include <cstring>
#include <unordered_map>

#include "csv/errors/XelCsvOpen.h"
#include "csv/line/XelCsvLines.h"
#include "csv/line/XelCsvText.h"
#include "csv/table/XelCsvTableReaderI.h"

namespace xeltools {

namespace {

// A table while the file is read.
struct Extent {
  TableFacts facts;
  long firstDataOffset = 0;
  long endOffset = 0;  // of its last line
};

void openLines(XelCsvLines& lines, const std::string& file) {
  const int error = lines.open(file.c_str(), "rb", XelCsvReach::ManyLines);
  if (error != 0) XelThrowOpenError(error, file.c_str());
}

Extent readExtent(DataFile& file, long number, const std::string& name) {
  Table table(file, name);
  const XelCsvTableReaderI* const impl = table.getHandle().getImpl();
  Extent extent;
  extent.facts.number = number;
  extent.facts.name = name;
  extent.facts.isReserved = number < file.getNumberOfReservedTables();
  extent.facts.columns = static_cast<long>(table.getColumns().size());
  for (const long key : table.getKeys()) extent.facts.keys.push_back(table.getColumnName(key));
  if (file.isMultiTable()) {
    extent.facts.begin = file.getReader().getImpl()->getOffsetAndLineNumber(name.c_str())->offset;
  }
  extent.firstDataOffset = impl->getFirstDataOffset();
  extent.endOffset = impl->getEndOffset();
  if (!file.isSplit()) extent.facts.lines = table.countLines();
  return extent;
}

// The end of the line that begins at an offset.
long findEndOfLine(XelCsvLines& lines, long offset) {
  return lines.seek(offset) && lines.read() ? lines.getOffset() : offset;
}

// The one pass over a file whose tables are split: each line belongs to the table that the directory gave it to, and is
// one of its data lines when its first field, as it is read, is the table's name.
class SplitPass {
 public:
  SplitPass(DataFile& dataFile, std::vector<Extent>& extents) : file(dataFile), tables(extents) {
    for (std::size_t index = 0; index < tables.size(); ++index) byName[tables[index].facts.name] = index;
    for (Extent& extent : tables) extent.facts.stretches = 0;
  }

  void run(XelCsvLines& lines) {
    long lineNumber = -1;
    long offset = 0;
    while (lines.skipCommentAndEmptyLines(file.getParameters().comment, lineNumber, offset)) {
      const XelCsvSpan line = lines.getLine();
      Extent* const owner = findOwner(line);
      if (owner == nullptr) continue;
      if (owner != current) ++owner->facts.stretches;
      current = owner;
      owner->facts.end = offset + line.getLength();
      countIfData(line, offset);
    }
  }

 private:
  Extent* find(const std::string& name) {
    const auto found = byName.find(name);
    return found == byName.end() ? nullptr : &tables[found->second];
  }

  // A name that the directory does not know ends at the first bar.
  Extent* findOwner(const XelCsvSpan& line) {
    const XelCsvSpan field = XelFirstField(line.begin, line.end, file.getReader().getImpl()->getFormat());
    const XelCsvSpan name = XelTrimmed(field.begin, field.end);
    if (name.getLength() == 0) return nullptr;
    if (Extent* const found = find({name.begin, name.end})) return found;
    const void* const bar = std::memchr(name.begin, '|', static_cast<std::size_t>(name.getLength()));
    if (bar == nullptr) return nullptr;
    const XelCsvSpan cut = XelTrimmed(name.begin, static_cast<const char*>(bar));
    return find({cut.begin, cut.end});
  }

  void countIfData(const XelCsvSpan& line, long offset) {
    XelFormatLine(line.begin, line.end, text.data(), file.getReader().getImpl()->getFormat());
    const XelCsvSpan name = XelTrimmed(text.data(), text.data() + std::strlen(text.data()));
    Extent* const table = find({name.begin, name.end});
    const bool isData = table != nullptr && offset >= table->firstDataOffset && offset <= table->endOffset;
    if (isData) ++table->facts.lines;
  }

  DataFile& file;
  std::vector<Extent>& tables;
  std::unordered_map<std::string, std::size_t> byName;
  Extent* current = nullptr;
  std::array<char, XelLineSize> text{};
};

}  // namespace

std::vector<TableFacts> surveyTables(DataFile& file) {
  std::vector<Extent> extents;
  for (const std::string& name : file.getTableNames()) {
    extents.push_back(readExtent(file, static_cast<long>(extents.size()), name));
  }
  XelCsvLines lines(file.getReader().getEnv());
  openLines(lines, file.getName());
  if (!file.isMultiTable()) {
    extents.front().facts.end = extents.front().endOffset;  // the file's
  } else if (file.isSplit()) {
    SplitPass(file, extents).run(lines);
  } else {
    for (Extent& extent : extents) extent.facts.end = findEndOfLine(lines, extent.endOffset);
  }
  std::vector<TableFacts> facts;
  facts.reserve(extents.size());
  for (Extent& extent : extents) facts.push_back(std::move(extent.facts));
  return facts;
}

}  // namespace xeltools
