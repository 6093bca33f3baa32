#include "check/XelCsvColumnChecks.h"

#include <cstring>
#include <initializer_list>

#include "check/XelCsvMessage.h"

namespace {

constexpr std::size_t MostSuspects = 32;

// Whether as many values are exceptions among as many numbers.
bool areExceptions(long exceptions, long numbers) {
  constexpr long NumbersForOne = 10;
  constexpr long LessForFirst = 6;
  return numbers + LessForFirst >= NumbersForOne * exceptions;
}

}  // namespace

XelCsvColumnChecks::XelCsvColumnChecks(const XelCsvCheckContext& checked, XelCsvLineAgain& lookBack)
    : context(checked), again(lookBack), formerFields(checked.env, checked.format) {
  for (const XelCsvCode code :
       {XelCsvCode::IntOverflow, XelCsvCode::NotANumber, XelCsvCode::TrailingText, XelCsvCode::DecimalMismatch}) {
    isWanted = isWanted || context.findings.isWanted(code);
  }
}

void XelCsvColumnChecks::check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields) {
  if (!isWanted) return;
  const long count = fields.getCount();
  if (static_cast<long>(table.values.size()) < count) table.values.resize(static_cast<std::size_t>(count));
  mayHoldPoint = context.parameters.decimal != '.' &&
                 std::memchr(line.text.begin, '.', static_cast<std::size_t>(line.text.getLength())) != nullptr;
  for (long position = context.getFirstColumn(); position < count; ++position) {
    if (!table.values[static_cast<std::size_t>(position)].isText) checkValue(table, line, fields, position);
  }
}

void XelCsvColumnChecks::checkValue(XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                    const XelCsvFields& fields, long position) {
  XelCsvColumn& column = table.values[static_cast<std::size_t>(position)];
  const XelCsvSpan value = fields.getTrimmed(position);
  const XelNumberKind kind = XelKindOfNumber(value);
  if (isOtherDecimal(line, value, kind, position)) {
    if (column.mismatches == 0) column.firstMismatch = line.getMark();
    ++column.mismatches;
  } else if (kind == XelNumberKind::Integer) {
    ++column.integers;
  } else if (kind == XelNumberKind::Float) {
    ++column.floats;
  } else if (kind == XelNumberKind::LargeInteger) {
    addLarge(table, column, position, line.getMark());
  } else if (kind != XelNumberKind::Empty) {
    const bool isText = kind == XelNumberKind::Text;
    addText(table, column, position, line.getMark(), isText ? XelCsvCode::NotANumber : XelCsvCode::TrailingText);
  }
  if (!column.suspects.empty() && areExceptions(column.texts, column.getNumbers())) {
    tellSuspects(table, column.suspects, position);
  }
  if (!column.largeSuspects.empty() && !column.hasFloats() && areExceptions(column.overflows, column.integers)) {
    tellSuspects(table, column.largeSuspects, position);
  }
}

// Only what begins with a number can be one with the other decimal character. Where the decimal character is not a point,
// a point in the file is the other one, and not to be told from it in the formatted line.
bool XelCsvColumnChecks::isOtherDecimal(const XelCsvCheckedLine& line, const XelCsvSpan& value, XelNumberKind kind,
                                        long position) const {
  const char decimal = context.parameters.decimal;
  const char quote = context.parameters.quote;
  const bool hasTrailing = kind == XelNumberKind::TrailingText;
  if (decimal == '.') return hasTrailing && XelIsOtherDecimal(value, decimal, quote);
  if (!mayHoldPoint || (!hasTrailing && kind != XelNumberKind::Float)) return false;
  return XelIsOtherDecimal(XelRawField(line.text, context.format, position), decimal, quote);
}

void XelCsvColumnChecks::addText(XelCsvCheckedTable& table, XelCsvColumn& column, long position,
                                 const XelCsvLineMark& line, XelCsvCode code) {
  ++column.texts;
  if (areExceptions(column.texts, column.getNumbers())) {
    tellSuspects(table, column.suspects, position);
    tell(table, {line, code}, position);
  } else if (column.suspects.size() < MostSuspects) {
    column.suspects.push_back({line, code});
  } else {
    column = XelCsvColumn();
    column.isText = true;
  }
}

// Told at once in a column of integers that fit; a column of large integers keeps the first.
void XelCsvColumnChecks::addLarge(XelCsvCheckedTable& table, XelCsvColumn& column, long position,
                                  const XelCsvLineMark& line) {
  ++column.overflows;
  if (column.hasFloats()) {
    column.largeSuspects.clear();
  } else if (areExceptions(column.overflows, column.integers)) {
    tell(table, {line, XelCsvCode::IntOverflow}, position);
  } else if (column.areMostLarge || column.largeSuspects.size() == MostSuspects) {
    column.areMostLarge = true;
    column.largeSuspects.resize(1);
  } else {
    column.largeSuspects.push_back({line, XelCsvCode::IntOverflow});
  }
}

void XelCsvColumnChecks::tellSuspects(const XelCsvCheckedTable& table, std::vector<XelCsvColumn::Suspect>& suspects,
                                      long position) {
  for (const XelCsvColumn::Suspect& suspect : suspects) tell(table, suspect, position);
  suspects.clear();
}

// The field of a line that was read again, empty when the file has changed and there is none.
XelCsvSpan XelCsvColumnChecks::formatAgain(const XelCsvCheckedLine& line, long position) {
  formerFields.format(line.text);
  return position < formerFields.getCount() ? formerFields.getTrimmed(position)
                                            : XelCsvSpan{line.text.end, line.text.end};
}

void XelCsvColumnChecks::tell(const XelCsvCheckedTable& table, const XelCsvColumn::Suspect& suspect, long position) {
  if (!context.findings.takes(suspect.code, table.name)) return;
  const XelCsvCheckedLine line = again.read(suspect.line);
  const XelCsvSpan value = formatAgain(line, position);
  std::string message = XelQuoted(value) + " in " + table.describeColumn(position);
  if (suspect.code == XelCsvCode::IntOverflow) {
    message += " does not fit in 32 bits: getIntByPosition(" + std::to_string(position) +
               ") throws XelOverflowException, getFloatByPosition reads it";
  } else if (suspect.code == XelCsvCode::TrailingText) {
    message += ", a column of numbers, reads silently as " + XelShowNumber(value);
  } else {
    message += ", a column of numbers, reads silently as 0";
  }
  context.findings.report(suspect.code, XelPlaceOf(line, XelRawField(line.text, context.format, position)),
                          std::move(message));
}

void XelCsvColumnChecks::finish(XelCsvCheckedTable& table) {
  for (std::size_t index = 0; index < table.values.size(); ++index) {
    finishColumn(table, table.values[index], static_cast<long>(index));
  }
}

// Where large integers are no exception, the first speaks for all.
void XelCsvColumnChecks::finishColumn(const XelCsvCheckedTable& table, XelCsvColumn& column, long position) {
  const bool isNumeric = !column.isText && areExceptions(column.texts, column.getNumbers());
  if (!isNumeric) return;
  if (column.mismatches > 0) reportMismatch(table, column, position);
  if (!column.hasFloats() && !column.largeSuspects.empty()) tell(table, column.largeSuspects.front(), position);
}

void XelCsvColumnChecks::reportMismatch(const XelCsvCheckedTable& table, const XelCsvColumn& column, long position) {
  if (!context.findings.takes(XelCsvCode::DecimalMismatch, table.name)) return;
  const XelCsvCheckedLine line = again.read(column.firstMismatch);
  const XelCsvSpan place = XelRawField(line.text, context.format, position);
  const char decimal = context.parameters.decimal;
  std::string message = XelQuoted(place) + " in " + table.describeColumn(position) + " is written with " +
                        XelShown(decimal == '.' ? ',' : '.') + " where the decimal character is " + XelShown(decimal) +
                        ", and reads silently as " + XelShowNumber(formatAgain(line, position));
  if (column.mismatches > 1) message += "; " + XelCounted(column.mismatches, "field") + " of the column in all";
  context.findings.report(XelCsvCode::DecimalMismatch, XelPlaceOf(line, place), std::move(message));
}
