#include "check/XelCsvContentChecks.h"

#include <algorithm>

#include "check/XelCsvMessage.h"

bool XelCsvContentChecks::check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields) {
  const long count = fields.getCount();
  if (table.dataLines == 0) {
    if (table.expectedFields < 0) table.expectedFields = count;
    checkDirectives(table, line, count);
  }
  if (count == table.expectedFields) return true;
  reportRagged(table, line, count);
  return false;
}

void XelCsvContentChecks::reportRagged(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long count) {
  const bool isShort = count < table.expectedFields;
  if (!context.findings.takes(XelCsvCode::Ragged, table.name,
                              isShort ? XelCsvSeverity::Error : XelCsvSeverity::Warning)) {
    return;
  }
  const char* const model =
      table.headings.empty() ? table.hasKeyLine ? "key line" : "first line of data" : "heading line";
  std::string message =
      XelCounted(count, "field") + " where the " + model + " has " + std::to_string(table.expectedFields) + ": ";
  XelCsvSpan place = XelRawField(line.text, context.format, isShort ? count : table.expectedFields);
  if (isShort) {
    message += describeMissing(table, count);
  } else {
    place.end = XelSplitRaw(line.text, context.format).back().end;
    message += "from position " + std::to_string(table.expectedFields) + " on they are read by position only";
  }
  context.findings.report(XelCsvCode::Ragged, XelPlaceOf(line, place), std::move(message));
}

// The fields of the key are looked for when a cached table is made, all others when they are asked for.
std::string XelCsvContentChecks::describeMissing(const XelCsvCheckedTable& table, long count) const {
  const std::vector<long>& keys = table.keyPositions;
  const bool hasTooFewForKeys = count < static_cast<long>(keys.size());
  const auto missing = std::find_if(keys.begin(), keys.end(), [count](long position) { return position >= count; });
  if (!hasTooFewForKeys && missing == keys.end()) {
    return "getStringByPosition(" + std::to_string(count) + ") throws XelFieldNotFoundException";
  }
  const std::string thrown = hasTooFewForKeys ? "XelCsvReaderException" : "XelFieldNotFoundException";
  const std::string maker = context.parameters.isMultiTable ? "getTableByName" : "the constructor of XelCsvReader";
  return "the key lacks a field, " + maker + " throws " + thrown +
         " for a cached table, getLineByKey for one that is not";
}

void XelCsvContentChecks::checkDirectives(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long count) {
  const bool isFormat = table.name == "XELO_CSV_FORMAT";
  const long wanted = isFormat ? 2 : 3;
  if ((!isFormat && table.name != "XELO_DATA_SCHEMA") || count >= wanted) return;
  if (!context.findings.takes(XelCsvCode::MissingDirectivesField, table.name)) return;
  const char* effect =
      "field 1, the version of the format, is missing: getCsvFormat() throws XelFieldNotFoundException";
  if (!isFormat) {
    effect = count < 2 ? "fields 1 and 2, what requires the data and their version, are missing: getRequiredBy() and "
                         "getFileVersion() throw XelFieldNotFoundException"
                       : "field 2, the version of the data, is missing: getFileVersion() or getRequiredBy(), "
                         "whichever is called first, throws XelFieldNotFoundException";
  }
  context.findings.report(XelCsvCode::MissingDirectivesField,
                          XelPlaceOf(line, XelRawField(line.text, context.format, count)), effect);
}

void XelCsvContentChecks::finish(const XelCsvCheckedTable& table) {
  if (table.dataLines > 0 || !context.findings.takes(XelCsvCode::EmptyTable, table.name)) return;
  context.findings.report(XelCsvCode::EmptyTable, table.start,
                          context.parameters.isMultiTable
                              ? "table " + XelQuoted(table.name) + " has no line of data: getNumberOfItems() answers 0"
                              : "the file has no line of data: getNumberOfItems() answers 0");
}

void XelCsvContentChecks::reportNoTable() {
  if (!context.findings.takes(XelCsvCode::EmptyTable)) return;
  context.findings.report(XelCsvCode::EmptyTable, {}, "the file has no table: getNumberOfTables() answers 0");
}
