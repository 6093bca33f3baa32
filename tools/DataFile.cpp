#include "tools/DataFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "csv/line/XelCsvLines.h"
#include "csv/line/XelCsvText.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tools/Errors.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

std::string makeColumnName(long position) { return "Column " + std::to_string(position); }

// The name of a file that was checked.
const char* check(const std::string& file) {
  checkReadable(file);
  return file.c_str();
}

}  // namespace

void checkReadable(const std::string& file) {
  const std::string name = makePrintable(file);
  if (file.empty()) throw UserError("the name of the data file is empty");
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) throw UserError(name + ": there is no such file");
    return;
  }
  if (S_ISDIR(status.st_mode)) throw UserError(name + ": is a folder; name a data file");
  if (!S_ISREG(status.st_mode)) throw UserError(name + ": is no regular file; save what it gives into one first");
  if (access(file.c_str(), R_OK) != 0) throw UserError(name + ": may not be read; ask its owner for the permission");
}

long getFileSize(const std::string& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 ? status.st_size : 0;
}

DataFile::DataFile(const std::string& file, ReaderParameters readerParameters, Access access)
    : name(file),
      parameters(std::move(readerParameters)),
      reader(*env, check(file), parameters.isMultiTable ? 1 : 0, parameters.allowTableSplitting ? 1 : 0,
             parameters.separators.c_str(), parameters.decimal, parameters.quote, parameters.comment,
             access == Access::AsParameters && parameters.isCached ? 1 : 0) {
  if (!parameters.isMultiTable) {
    tableNames.emplace_back();
    return;
  }
  const XelCsvReaderI* const impl = reader->getImpl();
  for (long number = 0; number < impl->getNumberOfAllTables(); ++number) {
    tableNames.emplace_back(impl->getTableName(number));
  }
}

long DataFile::getNumberOfReservedTables() const {
  return isMultiTable() ? reader->getImpl()->getNumberOfReservedTables() : 0;
}

std::vector<std::string> DataFile::selectTables(const std::optional<std::string>& wanted) const {
  if (!wanted) return {tableNames.begin() + getNumberOfReservedTables(), tableNames.end()};
  if (!isMultiTable()) {
    throw UserError(makePrintable(name) + ": is read as a file of one table, so there is no table '" +
                    makePrintable(*wanted) + "' to name; --multi reads it as one of several");
  }
  if (std::find(tableNames.begin(), tableNames.end(), *wanted) == tableNames.end()) {
    const std::string similar = findSimilar(*wanted, tableNames);
    throw UserError(
        makePrintable(name) + ": has no table '" + makePrintable(*wanted) + "'; " +
        (similar.empty() ? "xelcsv tables lists those it has" : "is " + makePrintable(similar) + " meant?"));
  }
  return {*wanted};
}

std::string DataFile::selectTable(const std::optional<std::string>& wanted) const {
  const std::vector<std::string> selected = selectTables(wanted);
  if (selected.size() == 1) return selected.front();
  throw UserError(makePrintable(name) + ": has " + countOf(static_cast<long>(selected.size()), "table") +
                  "; name one of them behind the file");
}

std::string Column::getName() const { return heading && !heading->empty() ? *heading : makeColumnName(position); }

Table::Table(DataFile& dataFile, const std::string& tableName)
    : file(dataFile),
      name(dataFile.isMultiTable() ? tableName : std::string()),
      handle(dataFile.isMultiTable() ? dataFile.getReader().getTableByName(tableName.c_str())
                                     : dataFile.getReader().getReaderForUniqueTableFile()),
      first(dataFile.isMultiTable() ? 1 : 0) {
  readColumns();
  keyLine = findKeyLine();
}

std::string Table::describe() const { return name.empty() ? "the table" : "table " + makePrintable(name); }

// In a one-table file the mark in front of the headings has a field of the heading line that the data lines do not have.
void Table::readColumns() {
  const XelCsvTableReaderI* const impl = handle->getImpl();
  const XelCsvLine headings = handle->getFirstLine();
  const long marks = first == 0 ? 1 : 0;
  const long named = headings.isEmpty() ? 0 : headings.getNumberOfFields() - marks;
  for (long key = 0; key < impl->getNumberOfKeys(); ++key) keys.push_back(impl->getKeyPosition(key));
  long end = std::max(handle->getNumberOfColumns(), named);
  for (const long key : keys) end = std::max(end, key + 1);
  for (long position = first; position < end; ++position) {
    Column column{position, std::nullopt, std::find(keys.begin(), keys.end(), position) != keys.end()};
    if (position < named) column.heading = headings.getStringByPosition(position + marks);
    columns.push_back(column);
  }
}

// Looks at the lines of the heading zone as the library does: the first one whatever it is, then those that are no
// comments.
bool Table::findKeyLine() const {
  const XelCsvTableReaderI* const impl = handle->getImpl();
  const OffsetAndLineNumber* const start =
      file.isMultiTable() ? impl->getReader()->getOffsetAndLineNumber(name.c_str()) : nullptr;
  XelCsvLines lines(handle->getEnv());
  if (lines.open(file.getName().c_str(), "rb", XelCsvReach::OneLine) != 0) return false;
  if (!lines.seek(start == nullptr ? 0 : start->offset)) return false;
  std::vector<char> text(XelLineSize);
  for (bool isFirst = true; lines.getOffset() < impl->getFirstDataOffset() && lines.read(); isFirst = false) {
    const XelCsvSpan line = lines.getLine();
    if (!isFirst && *line.begin == file.getParameters().comment) continue;
    XelFormatLine(line.begin, line.end, text.data(), impl->getReader()->getFormat());
    const std::string_view mark = text.data();
    if (mark.find('|') != std::string_view::npos && mark.find("KEYS") != std::string_view::npos) return true;
  }
  return false;
}

std::string Table::getColumnName(long position) const {
  const auto index = static_cast<std::size_t>(position - first);
  return index < columns.size() ? columns[index].getName() : makeColumnName(position);
}

std::string Table::composeKey(const Line& line) const {
  std::string key;
  for (const long position : keys) {
    if (position != keys.front() || !key.empty()) key += '-';
    key += line.getFieldOrNothing(position);
  }
  return key;
}

void Table::forEach(const std::function<bool(const Line&)>& visit) const {
  long number = 0;
  for (XelCsvTableReader::LineIterator it(*handle); it.ok(); ++it) {
    const Line line(*it, number);
    if (file.getProgress() != nullptr) file.getProgress()->advance(line.getBytes());
    if (file.isSplit() && line.getFieldOrNothing(0) != name) continue;
    ++number;
    if (!visit(line)) return;
  }
}

long Table::countLines() { return handle->getNumberOfItems(); }

}  // namespace xeltools
