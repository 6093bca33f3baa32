#include "check/XelCsvContentChecks.h"

#include <algorithm>

#include "check/XelCsvMessage.h"

bool XelCsvContentChecks::check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields) {
  const long count = fields.getCount();
  if (table.dataLines == 0) {
    if (table.expectedFields < 0) table.expectedFields = count;
    checkDirectives(table, line, count);
  }
  if (count == table.expectedFields && hasKey(table, count)) return true;
  reportRagged(table, line, count);
  return false;
}

void XelCsvContentChecks::checkUnintended(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                          const XelCsvFields& fields) {
  if (!hasKey(table, fields.getCount())) reportRagged(table, line, fields.getCount());
}

// Whether a line of so many fields has all those of the key, and, as the library asks too, not fewer fields than those.
bool XelCsvContentChecks::hasKey(const XelCsvCheckedTable& table, long count) { return count >= table.fieldsForKey; }

void XelCsvContentChecks::reportRagged(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long count) {
  const bool lacksKey = !hasKey(table, count);
  const bool isShort = lacksKey || count < table.expectedFields;
  const XelCsvSeverity severity = isShort ? XelCsvSeverity::Error : XelCsvSeverity::Warning;
  if (!context.findings.takes(XelCsvCode::Ragged, table.name, severity)) return;
  const std::string fields = XelCounted(count, "field");
  const char* const model = !table.headings.empty() ? "heading line"
                            : table.hasKeyLine      ? "key line"
                                                    : "first line of data";
  std::string message = fields + " where the " + model + " has " + std::to_string(table.expectedFields) + ": ";
  XelCsvSpan place = XelRawField(line.text, context.format, isShort ? count : table.expectedFields);
  if (lacksKey) {
    if (count >= table.expectedFields)
      message = fields + " where the key takes " + std::to_string(table.fieldsForKey) + ": ";
    message += describeMissingKey(table, count);
  } else if (isShort) {
    message += "getStringByPosition(" + std::to_string(count) + ") throws XelFieldNotFoundException";
  } else {
    place.end = XelSplitRaw(line.text, context.format).back().end;
    message += "from position " + std::to_string(table.expectedFields) + " on they are read by position only";
  }
  context.findings.report(XelCsvCode::Ragged, XelPlaceOf(line, place), std::move(message));
}

// The fields of the key are looked for when a cached table is made, all others when they are asked for.
std::string XelCsvContentChecks::describeMissingKey(const XelCsvCheckedTable& table, long count) const {
  const bool areTooFew = count < static_cast<long>(table.keyPositions.size());
  const std::string thrown = areTooFew ? "XelCsvReaderException" : "XelFieldNotFoundException";
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
  const bool isTold = table.hasQuotedName && context.isSplit();
  if (table.dataLines > 0 || isTold || !context.findings.takes(XelCsvCode::EmptyTable, table.name)) return;
  context.findings.report(XelCsvCode::EmptyTable, table.start,
                          context.parameters.isMultiTable
                              ? "table " + XelQuoted(table.name) + " has no line of data: getNumberOfItems() answers 0"
                              : "the file has no line of data: getNumberOfItems() answers 0");
}

void XelCsvContentChecks::reportNoTable() {
  if (!context.findings.takes(XelCsvCode::EmptyTable)) return;
  context.findings.report(XelCsvCode::EmptyTable, {}, "the file has no table: getNumberOfTables() answers 0");
}
