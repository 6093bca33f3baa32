#include "csv/table/XelNonCachedCsvTableReaderI.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "csv/line/XelCsvBeginning.h"
#include "csv/line/XelCsvFieldStart.h"
#include "csv/line/XelCsvStretch.h"
#include "csv/table/XelCsvGlance.h"
#include "csv/table/XelCsvScan.h"

namespace {

bool isDataLine(const XelCsvStretch& stretch, long index, char comment) noexcept {
  const char* const line = stretch.getLine(index);
  return *line != comment && !XelIsEmptyLine(line, stretch.getLine(index + 1));
}

// Number of whole lines that follow in memory and begin in the table's region.
long countLinesOf(const XelCsvTableReaderI& table, XelCsvStretch& stretch) noexcept {
  stretch.find();
  return stretch.countUpTo(table.getEndOffset());
}

// Lines of a search that need not be read: their key is another, and nothing about them is amiss.
//
// With the one key column in front a line cannot have too few fields for its keys. Otherwise it has enough of them when its
// last key field begins somewhere. When the one key column is the second, a line's first field, with the separator behind
// it, is mostly byte by byte that of a line that was read and is the table's own: then a glance at it finds the second.
class PassedOver {
 public:
  PassedOver(const XelCsvTableReaderI& searched, XelCsvLines& read, const char* key) noexcept
      : table(searched),
        stretch(read),
        glance(table.getReader()->getFormat(), key),
        finder(XelGetFieldFinder(table.getReader()->getFormat())),
        keys(table.getNumberOfKeys()) {
    for (long index = 0; index < keys; ++index) last = std::max(last, table.getKeyPosition(index));
    isUsable = glance.isUsable() && keys > 0 && keys <= last + 1;
  }

  // Goes behind such lines and answers their number. The last data line known is never among them: when no other comes,
  // the table's number of fields is that of this line.
  long goOn() noexcept {
    if (!isUsable) return 0;
    long lines = countLinesOf(table, stretch) - 1;
    while (lines > 0 && !isDataLine(stretch, lines, table.getReader()->getComment())) --lines;
    lines =
        stretch.countReadable(lines + 1, std::max({XelFieldStartReach, glance.getReach(), beginning.getReach()})) - 1;
    long index = 0;
    if (last == 0) {
      while (index < lines && glance.isOther(stretch.getLine(index))) ++index;
    } else {
      while (index < lines && isOther(stretch.getLine(index))) ++index;
    }
    stretch.goOn(index);
    return index;
  }

  // Learns from the first field of a raw line of the table that has its key fields. When the only one is the second, there
  // is a separator behind the first.
  void learn(const XelCsvSpan& line) noexcept {
    if (last != 1) return;
    const XelCsvFormat& format = table.getReader()->getFormat();
    const XelCsvSpan field = XelFirstField(line.begin, line.end, format);
    const auto isQuote = [&](char byte) { return format.getClass(byte) == XelByteClass::Quote; };
    const bool isSimple = std::none_of(field.begin, field.end, isQuote);
    if (!isSimple || !beginning.set(field.begin, field.end + 1)) beginning.clear();
    beginningLength = field.getLength() + 1;
  }

 private:
  // Whether a line has all key fields and another key.
  bool isOther(const char* line) const noexcept {
    const char* const lastField = findLast(line);
    if (lastField == nullptr) return false;
    long from = 0;
    for (long key = 0; key < keys - 1; ++key) {
      from = glance.findNext(find(line, table.getKeyPosition(key), lastField), from);
      if (from < 0) return from == XelCsvGlance::Other;
    }
    return glance.isOther(find(line, table.getKeyPosition(keys - 1), lastField), from);
  }

  // The key field with the highest position; null when only reading the line tells where it is.
  const char* findLast(const char* line) const noexcept {
    const bool isFound = !beginning.isEmpty() && beginning.isAt(line);
    return isFound ? line + beginningLength : finder(line, table.getReader()->getFormat(), last);
  }

  // Another one, none of which begins behind the last.
  const char* find(const char* line, long position, const char* lastField) const noexcept {
    if (position == last) return lastField;
    return position == 0 ? line : finder(line, table.getReader()->getFormat(), position);
  }

  const XelCsvTableReaderI& table;
  XelCsvStretch stretch;
  XelCsvGlance glance;
  XelFieldFinder* finder;
  XelCsvBeginning beginning;
  long beginningLength = 0;
  long keys;
  long last = 0;  // the highest position of a key column
  bool isUsable = false;
};

// What the first byte of a line says: whether the line is a data line.
enum class FirstByte : unsigned char { No, Yes, Unsure };

}  // namespace

// Tests of what is kept here: GetLineByNumberScanning.OnePastTheEndYieldsTheNextTablesLine,
// GetLineByNumberScanning.PastTheEndOfTheFileYieldsTheLastLineFormattedAgain.
XelCsvLineI* XelNonCachedCsvTableReaderI::getLineByNumber(long number) {
  XelCsvScan scan(this, "r");
  // Kept: the kind of file is not looked at, only whether the table has a name (test:
  // GetLineByNumberScanning.AsksForANameEvenInAOneTableFileWhenItsTableHasOne).
  const bool isNamed = reader->isTableSplittingAllowed() && nameOfTable != nullptr;
  long count = -1;
  bool isFormatted = false;
  bool isSettled = false;  // no further try would change line, offset or text
  const auto format = [&] {
    if (!isFormatted) scan.format();
    isFormatted = true;
  };
  while (number >= 0 && scan.isInside() && !isSettled) {
    scan.next();  // whether a line was found does not matter
    if (scan.hasRead()) {
      isFormatted = false;
    } else {
      format();
      isSettled = !scan.formatAgain();
    }
    bool isMatch = true;
    if (isNamed) {
      format();
      isMatch = scan.isOwn();
    }
    if (isMatch) ++count;
    // A line that would be counted again for ever is the one wanted, whatever the number.
    const bool isWanted = count >= number || (isSettled && isMatch && scan.isInside());
    if (isWanted) {
      format();
      return scan.makeLine(isNamed, false);
    }
  }
  // The table's number of fields is that of the last line looked at, also then.
  if (count >= 0) format();
  XelCsvErrors::noLineScanned(getSite(), number);
}

XelCsvLineI* XelNonCachedCsvTableReaderI::getLineByKey(const char* key) {
  if (key == nullptr) XelCsvErrors::noKeyScanned(getSite(), key);
  XelEnvBlock<char> owned(env, const_cast<char*>(key), static_cast<long>(std::strlen(key)) + 1);
  XelCsvLines lines(env);
  openAt(lines, "rb", XelCsvReach::ManyLines, firstDataOffset);
  XelCsvScan scan(this, lines);
  PassedOver passedOver(*this, lines, key);
  while (scan.passOver(passedOver.goOn()), scan.next() && scan.isInside()) {
    const XelCsvSpan raw = lines.getLine();
    scan.format();
    // Kept: also a line of another table between the pieces of this one is asked for its number of fields.
    scan.checkNumberOfKeys();
    if (isSplit() && !scan.isOwn()) continue;
    if (scan.hasKey(key)) {
      XelCsvLineI* line = scan.makeLine(isSplit(), true);
      owned.release();
      return line;
    }
    passedOver.learn(raw);
  }
  XelCsvErrors::noKeyScanned(getSite(), key);
}

long XelNonCachedCsvTableReaderI::getNumberOfItems() {
  XelCsvLines lines(env);
  openAt(lines, "rb", XelCsvReach::ManyLines, firstDataOffset);
  XelCsvScan scan(this, lines);
  if (!isSplit()) return countDataLines(lines, scan);
  long count = 0;
  while (scan.next() && scan.isInside()) {
    scan.format();
    if (scan.isOwn()) ++count;
  }
  return count;
}

// Nothing is asked of a line but its first byte, and whether it is empty when that is a blank.
long XelNonCachedCsvTableReaderI::countDataLines(XelCsvLines& lines, XelCsvScan& scan) const {
  FirstByte isData[256];
  std::fill(std::begin(isData), std::end(isData), FirstByte::Yes);
  for (const char byte : {' ', '\t'}) isData[static_cast<unsigned char>(byte)] = FirstByte::Unsure;
  for (const char byte : {'\n', '\r', '\0', reader->getComment()}) {
    isData[static_cast<unsigned char>(byte)] = FirstByte::No;
  }
  XelCsvStretch stretch(lines);
  const auto countAhead = [&] {
    long count = 0;
    for (;;) {
      const long known = countLinesOf(*this, stretch);
      if (known == 0) return count;
      for (long index = 0; index < known; ++index) {
        const FirstByte found = isData[static_cast<unsigned char>(*stretch.getLine(index))];
        if (found == FirstByte::Unsure) {
          count += isDataLine(stretch, index, reader->getComment()) ? 1 : 0;
        } else {
          count += static_cast<long>(found);
        }
      }
      stretch.goOn(known);
    }
  };
  long count = countAhead();
  while (scan.next() && scan.isInside()) count += 1 + countAhead();
  return count;
}

OffsetAndLineNumber* XelNonCachedCsvTableReaderI::getOffsetAndLineNumber(const char* name) const {
  return reader == nullptr ? nullptr : reader->getOffsetAndLineNumber(name);
}

void XelNonCachedCsvTableReaderI::clearTable() { partialClear(); }

void XelNonCachedCsvTableReaderI::copy(XelCsvTableReaderI* other) {
  if (other == this) return;
  XelNonCachedCsvTableReaderI fresh(env);
  fresh.partialCopy(other);
  openError = fresh.openError;
  if (openError != 0) return;
  clearTable();
  swapTable(fresh);
}
