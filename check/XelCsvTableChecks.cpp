#include "check/XelCsvTableChecks.h"

#include <algorithm>
#include <cstring>

#include "check/XelCsvMessage.h"
#include "check/XelCsvNames.h"

XelCsvTableChecks::XelCsvTableChecks(const XelCsvCheckContext& checked, const XelCsvZones& zonesOfTables)
    : context(checked), zones(zonesOfTables) {
  if (context.parameters.isMultiTable) return;
  tables.push_back(std::make_unique<XelCsvCheckedTable>(context.env, std::string()));
  current = tables.back().get();
}

XelCsvCheckedTable* XelCsvTableChecks::find(const XelCsvCheckedLine& line) {
  if (!context.parameters.isMultiTable) {
    if (current->start.line == 0) current->start = XelPlaceOf(line, line.getContent());
    return current;
  }
  const XelCsvSpan field = XelFirstField(line.text.begin, line.text.end, context.format);
  XelCsvSpan name = XelTrimmed(field.begin, field.end);
  const auto length = static_cast<std::size_t>(name.getLength());
  if (length == 0) {
    reportBlankName(line, field, false);
    return nullptr;
  }
  const bool isCurrent = current != nullptr && current->name.size() == length &&
                         std::memcmp(current->name.data(), name.begin, length) == 0;
  if (!isCurrent) {
    if (const void* bar = std::memchr(name.begin, '|', length)) {
      name = XelTrimmed(name.begin, static_cast<const char*>(bar));
      if (name.getLength() == 0) {
        // Without table splitting the directory takes no such table for its first.
        const bool isTable = context.isSplit() || !names.empty();
        reportBlankName(line, field, isTable);
        if (!isTable) return nullptr;
      }
    }
    std::string text(name.begin, name.end);
    if (current == nullptr || current->name != text) current = begin(std::move(text), line, name);
  }
  if (!isCurrent || field.getLength() != name.getLength()) checkName(line, field, name);
  return current;
}

XelCsvCheckedTable* XelCsvTableChecks::begin(std::string name, const XelCsvCheckedLine& line, const XelCsvSpan& place) {
  const auto known = names.find(name);
  if (known != names.end()) return comeBack(name, known->second, line, place);
  const long index = static_cast<long>(tables.size());
  checkReservedOrder(name, line, place);
  names.insert({name, {line.getMark(), false, index}});
  return add(std::move(name), line, place);
}

XelCsvCheckedTable* XelCsvTableChecks::comeBack(const std::string& name, Name& known, const XelCsvCheckedLine& line,
                                                const XelCsvSpan& place) {
  const bool isSplit = context.isSplit();
  const XelCsvCode code = isSplit ? XelCsvCode::SplitTable : XelCsvCode::DuplicateTable;
  // Where heading lines of other tables stand between, that is told of them.
  const bool isForeign = isSplit && zones.findForeign(*tables[static_cast<std::size_t>(known.index)]) != nullptr;
  if (!known.isTold && !isForeign && context.findings.takes(code, name)) {
    const std::string back = "table " + XelQuoted(name) + " of line " + std::to_string(known.first.line) +
                             " comes back behind another table: ";
    context.findings.report(code, XelPlaceOf(line, place),
                            isSplit ? back + "its lines read as one table"
                                    : back +
                                          "without table splitting the constructor of XelCsvReader throws "
                                          "XelDuplicatedTableException");
  }
  known.isTold = true;
  if (isSplit) return tables[static_cast<std::size_t>(known.index)].get();
  XelCsvCheckedTable* const table = add(name, line, place);
  table->isRepeated = true;
  return table;
}

XelCsvCheckedTable* XelCsvTableChecks::add(std::string name, const XelCsvCheckedLine& line, const XelCsvSpan& place) {
  if (!context.isSplit() && !tables.empty()) {
    complete = std::move(tables.back());
    tables.pop_back();
  }
  tables.push_back(std::make_unique<XelCsvCheckedTable>(context.env, std::move(name)));
  tables.back()->start = XelPlaceOf(line, place);
  return tables.back().get();
}

std::vector<std::unique_ptr<XelCsvCheckedTable>> XelCsvTableChecks::takeRest() {
  current = nullptr;
  return std::move(tables);
}

void XelCsvTableChecks::reportBlankName(const XelCsvCheckedLine& line, const XelCsvSpan& field, bool isTable) {
  if (!context.findings.takes(XelCsvCode::BlankName)) return;
  const char* effect = "it belongs to no table and is not read";
  if (isTable) {
    effect = "it belongs to a table whose name is empty";
  } else if (!context.isSplit()) {
    effect = "it belongs to no table and is not read, or, between two lines of a table, reads silently as a line of it";
  }
  context.findings.report(XelCsvCode::BlankName, XelPlaceOf(line, field),
                          std::string("this line does not begin with a table's name: ") + effect);
}

// Spaces may stand around the name in one line and not in another, all else is in the name itself.
void XelCsvTableChecks::checkName(const XelCsvCheckedLine& line, const XelCsvSpan& field, const XelCsvSpan& name) {
  if (!current->hasBlankName && XelHasBlankAround(field, name)) {
    current->hasBlankName = true;
    XelReportBlankAround(context, current->name, line, name, "the name of the table", "getTableByName");
  }
  const bool hasQuote =
      std::memchr(name.begin, context.parameters.quote, static_cast<std::size_t>(name.getLength())) != nullptr;
  if (!hasQuote || current->hasQuotedName) return;
  current->hasQuotedName = true;
  reportQuotedName(line, name);
}

void XelCsvTableChecks::reportQuotedName(const XelCsvCheckedLine& line, const XelCsvSpan& name) {
  if (!context.findings.takes(XelCsvCode::QuotedName, current->name)) return;
  std::string bare(name.begin, name.end);
  bare.erase(std::remove(bare.begin(), bare.end(), context.parameters.quote), bare.end());
  std::string message =
      "quotes belong to the name of a table: getTableByName(" + XelQuoted(bare) + ") throws XelTableNotFoundException";
  if (context.isSplit()) message += ", and the table with the quotes in its name has no lines";
  context.findings.report(XelCsvCode::QuotedName, XelPlaceOf(line, name), message);
}

void XelCsvTableChecks::checkReservedOrder(const std::string& name, const XelCsvCheckedLine& line,
                                           const XelCsvSpan& place) {
  const bool isFormat = name == "XELO_CSV_FORMAT";
  const std::size_t before = names.size();
  if (before == 0) isFirstFormat = isFormat;
  if (before == 0 || (!isFormat && name != "XELO_DATA_SCHEMA")) return;
  const bool isInOrder = before == 1 && isFirstFormat;  // this one is XELO_DATA_SCHEMA then
  if (isInOrder || !context.findings.takes(XelCsvCode::ReservedTableOrder, name)) return;
  context.findings.report(
      XelCsvCode::ReservedTableOrder, XelPlaceOf(line, place),
      name +
          (isFormat ? " is not the first table of the file"
                    : " is neither the first table of the file nor the one behind XELO_CSV_FORMAT") +
          ": getNumberOfTables() counts it and a TableIterator visits it like any other table");
}
