#include "check/XelCsvHeadingChecks.h"

#include <algorithm>
#include <string_view>

#include "check/XelCsvMessage.h"
#include "check/XelCsvNames.h"
#include "csv/line/XelCsvNumbers.h"

namespace {

std::string_view textOf(const XelCsvSpan& span) { return {span.begin, static_cast<std::size_t>(span.getLength())}; }

bool holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

bool holdsInAnyCase(std::string_view text, std::string_view word) {
  const auto isSame = [](char left, char right) {
    return left == right || (left >= 'a' && left <= 'z' && left - 'a' + 'A' == right);
  };
  return std::search(text.begin(), text.end(), word.begin(), word.end(), isSame) != text.end();
}

bool isMarked(std::string_view first) { return holds(first, "NAMES") || holds(first, "KEYS"); }

bool isMarkedInAnyCase(std::string_view first) {
  return holdsInAnyCase(first, "NAMES") || holdsInAnyCase(first, "KEYS");
}

}  // namespace

XelCsvHeadingChecks::Kind XelCsvHeadingChecks::check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                                     const XelCsvFields& fields) {
  if (!table.isStarted) start(table, fields.getCount());
  const std::string_view first = textOf(fields.getField(0));
  const bool hasBar = holds(first, "|");
  if (zones.findForeign(table) != nullptr) takeForeign(table);
  if (!hasBar) zones.end();
  if (table.isInZone && zones.isOver(table)) closeZone(table);
  if (isFirstLinePending) checkFirstLine(table, hasBar && isMarkedInAnyCase(first));
  if (!hasBar) {
    table.hasLostZone = false;
    return Kind::Data;
  }
  if (context.isSplit() && isMarked(first)) zones.add(table, line.getMark(), holds(first, "KEYS"));
  if (!table.isInZone) {
    if (context.isSplit()) return checkSkipped(table, line, isMarkedInAnyCase(first));
    return isMarkedInAnyCase(first) ? checkLostHeading(table, line, fields) : Kind::Data;
  }
  if (holds(first, "NAMES")) addHeadingLine(table, line, fields);
  if (holds(first, "KEYS")) addKeyLine(table, line, fields);
  if (!isMarked(first)) reportMarker(table, line, fields.getCount(), isMarkedInAnyCase(first));
  return Kind::Heading;
}

void XelCsvHeadingChecks::start(XelCsvCheckedTable& table, long columns) {
  table.isStarted = true;
  table.columns = columns;
  zones.start(table);
}

// More lines of the table have come. Key columns of other tables are keys of this one; headings of other tables are told,
// and left alone otherwise, so that lines are compared with what they were meant for.
void XelCsvHeadingChecks::takeForeign(XelCsvCheckedTable& table) {
  if (context.findings.takes(XelCsvCode::ForeignHeading, table.name)) {
    const XelCsvCheckedLine line = again.read(zones.findForeign(table)->mark);
    context.findings.report(XelCsvCode::ForeignHeading, XelPlaceOf(line, line.getContent()),
                            "with table splitting the heading zone of table " + XelQuoted(table.name) +
                                " goes on over this line: its headings or keys read silently as those of that table");
  }
  constexpr long MostKeyLines = 1000;  // of thousands of tables that begin together, more would take too long
  long keyLines = 0;
  while (const XelCsvZones::Line* const foreign = zones.takeForeign(table)) {
    if (!foreign->isKeyLine || ++keyLines > MostKeyLines) continue;
    const XelCsvCheckedLine line = again.read(foreign->mark);
    foreignFields.format(line.text);
    addKeyLine(table, line, foreignFields);
  }
}

void XelCsvHeadingChecks::passFirstLine(XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                        XelCsvFields& fields) {
  fields.format(line.text);
  if (holds(textOf(fields.getField(0)), "|")) {
    if (isMarked(textOf(fields.getField(0)))) reportCommentAsHeading(table, line);
    check(table, line, fields);
    return;
  }
  start(table, fields.getCount());
  zones.end();
  table.hasLostZone = true;
  firstLine = line.getMark();
  isFirstLinePending = true;
}

void XelCsvHeadingChecks::reportCommentAsHeading(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line) {
  if (!context.findings.takes(XelCsvCode::CommentBeforeHeadings, table.name)) return;
  context.findings.report(
      XelCsvCode::CommentBeforeHeadings, XelPlaceOf(line, line.getContent()),
      "the first line is taken as it stands: this comment, with a bar and NAMES or KEYS in its first "
      "field, reads silently as a heading or key line");
}

// The line behind the first one tells how bad the first one is.
void XelCsvHeadingChecks::checkFirstLine(const XelCsvCheckedTable& table, bool isHeading) {
  isFirstLinePending = false;
  const XelCsvSeverity severity = isHeading ? XelCsvSeverity::Error : XelCsvSeverity::Warning;
  if (!context.findings.takes(XelCsvCode::CommentBeforeHeadings, table.name, severity)) return;
  const XelCsvCheckedLine line = again.read(firstLine);
  const bool isEmpty = XelIsEmptyLine(line.text.begin, line.text.end);
  const std::string what = isEmpty ? "the first line is empty" : "the first line is a comment";
  context.findings.report(
      XelCsvCode::CommentBeforeHeadings, XelPlaceOf(line, line.getContent()),
      what + (isHeading
                  ? ", which ends the heading zone: the heading and key lines behind it read silently as data, and "
                    "getPosition() throws XelColumnHeaderNotFoundException"
                  : ", in which the library counts the columns: getNumberOfColumns() answers " +
                        std::to_string(table.columns) + ", and the key is made of as many"));
}

XelCsvHeadingChecks::Kind XelCsvHeadingChecks::checkLostHeading(XelCsvCheckedTable& table,
                                                                const XelCsvCheckedLine& line,
                                                                const XelCsvFields& fields) {
  if (table.hasLostZone) {
    if (holds(textOf(fields.getField(0)), "NAMES")) setHeadings(table, fields);
    return Kind::LostHeading;
  }
  if (context.findings.takes(XelCsvCode::HeadingAfterData, table.name)) {
    context.findings.report(XelCsvCode::HeadingAfterData, XelPlaceOf(line, XelRawField(line.text, context.format, 0)),
                            "heading and key lines count only in front of all other lines of a table: this one reads "
                            "silently as a line of data");
  }
  return Kind::LostHeading;
}

// With table splitting a line belongs to a table whose name is the whole of its first field, once the heading zone is over.
XelCsvHeadingChecks::Kind XelCsvHeadingChecks::checkSkipped(const XelCsvCheckedTable& table,
                                                            const XelCsvCheckedLine& line, bool isMarked) {
  const XelCsvCode code = isMarked ? XelCsvCode::HeadingAfterData : XelCsvCode::UnknownMarker;
  if (!context.findings.takes(code, table.name)) return Kind::Skipped;
  context.findings.report(code, XelPlaceOf(line, XelRawField(line.text, context.format, 0)),
                          isMarked
                              ? "heading and key lines count only in front of the first line of data, of whatever "
                                "table: this one is skipped silently"
                              : "a bar in the first field, behind lines of data: with table splitting this line is "
                                "skipped silently");
  return Kind::Skipped;
}

// As the library does: without a 1 in a key line every column is a key.
void XelCsvHeadingChecks::closeZone(XelCsvCheckedTable& table) {
  if (!table.isInZone) return;
  table.isInZone = false;
  table.hasChosenKeys = !table.keyPositions.empty();
  if (!table.hasChosenKeys) {
    for (long column = context.getFirstColumn(); column < table.columns; ++column) table.keyPositions.push_back(column);
  }
  table.fieldsForKey = static_cast<long>(table.keyPositions.size());
  for (const long position : table.keyPositions) table.fieldsForKey = std::max(table.fieldsForKey, position + 1);
  if (table.hasChosenKeys) return;
  if (!table.hasKeyLine || !context.findings.takes(XelCsvCode::KeyLineNoOnes, table.name)) return;
  const XelCsvCheckedLine line = again.read(table.keyLine);
  context.findings.report(XelCsvCode::KeyLineNoOnes, XelPlaceOf(line, line.getContent()),
                          "no field of the key line is 1: all " +
                              XelCounted(static_cast<long>(table.keyPositions.size()), "column") +
                              " together are the key, as without a key line");
}

// A heading line replaces the one before.
void XelCsvHeadingChecks::addHeadingLine(XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                         const XelCsvFields& fields) {
  if (!context.parameters.isMultiTable) table.columns = fields.getCount() - 1;
  table.hasHeadingLine = true;
  setHeadings(table, fields);
  checkHeadings(table, line, fields);
}

void XelCsvHeadingChecks::setHeadings(XelCsvCheckedTable& table, const XelCsvFields& fields) {
  table.expectedFields = fields.getCount() - context.getMarkerFields();
  table.headings.assign(static_cast<std::size_t>(table.expectedFields), {});
  for (long field = 1; field < fields.getCount(); ++field) {
    const auto column = static_cast<std::size_t>(field - context.getMarkerFields());
    table.headings[column] = textOf(fields.getTrimmed(field));
  }
}

// Of each kind one finding in a line.
void XelCsvHeadingChecks::checkHeadings(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                        const XelCsvFields& fields) {
  const std::vector<XelCsvSpan> raw = XelSplitRaw(line.text, context.format);
  const auto first = table.headings.begin() + context.getFirstColumn();
  bool hasEmpty = false;
  bool hasDuplicate = false;
  bool hasBlank = false;
  for (auto heading = first; heading != table.headings.end(); ++heading) {
    const long column = heading - table.headings.begin();
    const long field = column + context.getMarkerFields();
    const XelCsvSpan& place = raw[static_cast<std::size_t>(field)];
    if (heading->empty()) {
      if (!hasEmpty) reportEmptyHeading(table, line, place, column);
      hasEmpty = true;
      continue;
    }
    const auto equal = std::find(first, heading, *heading);
    if (equal != heading && !hasDuplicate) {
      hasDuplicate = true;
      reportDuplicateHeading(table, line, place, equal - table.headings.begin());
    }
    if (!hasBlank && XelHasBlankAround(fields.getField(field), fields.getTrimmed(field))) {
      hasBlank = true;
      XelReportBlankAround(context, table.name, line, XelTrimmed(place.begin, place.end), "the heading", "getPosition");
    }
  }
}

void XelCsvHeadingChecks::reportEmptyHeading(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                             const XelCsvSpan& place, long column) {
  if (!context.findings.takes(XelCsvCode::EmptyHeading, table.name)) return;
  context.findings.report(XelCsvCode::EmptyHeading, XelPlaceOf(line, place),
                          "the column at position " + std::to_string(column) +
                              " has an empty heading: its values are read by position, or by \"\" as their heading");
}

void XelCsvHeadingChecks::reportDuplicateHeading(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                                 const XelCsvSpan& place, long found) {
  if (!context.findings.takes(XelCsvCode::DuplicateHeading, table.name)) return;
  context.findings.report(XelCsvCode::DuplicateHeading, XelPlaceOf(line, place),
                          "the heading " + XelQuoted(table.headings[static_cast<std::size_t>(found)]) +
                              " stands in this line before: getPosition() finds the column at position " +
                              std::to_string(found) + ", the values of this one are read by position only");
}

void XelCsvHeadingChecks::addKeyLine(XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                     const XelCsvFields& fields) {
  const long marker = context.getMarkerFields();
  if (marker == 1 && !table.hasHeadingLine) table.columns = fields.getCount() - 1;
  if (!table.hasHeadingLine) table.expectedFields = table.columns;
  table.hasKeyLine = true;
  table.keyLine = line.getMark();
  bool isTold = false;
  for (long field = marker; field < fields.getCount(); ++field) {
    long value = 0;
    if (!XelParseInt(fields.getField(field).begin, value) && !isTold) {
      isTold = true;
      reportOverflow(table, line, field);
    }
    if (value == 1) table.keyPositions.push_back(field - marker);
  }
}

void XelCsvHeadingChecks::reportOverflow(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long field) {
  if (!context.findings.takes(XelCsvCode::KeyLineOverflow, table.name)) return;
  const char* const thrower = context.parameters.isMultiTable ? "getTableByName" : "the constructor of XelCsvReader";
  context.findings.report(XelCsvCode::KeyLineOverflow, XelPlaceOf(line, XelRawField(line.text, context.format, field)),
                          std::string("a key line tells a key column by 1, and no number of it may be larger than 32 "
                                      "bits: ") +
                              thrower + " throws XelOverflowException");
}

void XelCsvHeadingChecks::reportMarker(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line, long fieldCount,
                                       bool isCase) {
  const XelCsvCode code = isCase ? XelCsvCode::MarkerCase : XelCsvCode::UnknownMarker;
  if (!context.findings.takes(code, table.name)) return;
  std::string message = isCase ? "NAMES and KEYS mark a line in capital letters only: this one is skipped silently"
                               : "a bar in the first field and neither NAMES nor KEYS: this line is skipped silently";
  const bool isCounted = !context.parameters.isMultiTable && line.number == 0;
  if (isCounted && fieldCount > 1) {
    message += ", and where no other line names the columns its " + std::to_string(fieldCount) +
               " fields are counted as columns, of which the key is made";
  }
  context.findings.report(code, XelPlaceOf(line, XelRawField(line.text, context.format, 0)), std::move(message));
}
