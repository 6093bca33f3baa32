#include "check/XelCsvKeyChecks.h"

#include <algorithm>
#include <cstring>

#include "check/XelCsvMessage.h"
#include "csv/table/XelKeyHash.h"

namespace {

// The key of a line as the library composes it; in a line that lacks a field of it, or has fewer fields than the key, there
// is none, and the answer is false.
bool compose(const XelCsvCheckedTable& table, const XelCsvFields& fields, XelCsvKey& key) {
  if (fields.getCount() < table.fieldsForKey) return false;
  key.clear();
  for (const long position : table.keyPositions) key.add(fields.getTrimmed(position));
  return true;
}

bool isEqual(const XelCsvSpan& left, const XelCsvSpan& right) {
  const long length = left.getLength();
  if (length != right.getLength()) return false;
  return length == 0 || std::memcmp(left.begin, right.begin, static_cast<std::size_t>(length)) == 0;
}

}  // namespace

XelCsvKeyChecks::XelCsvKeyChecks(const XelCsvCheckContext& checked, XelCsvLineAgain& lookBack)
    : context(checked),
      again(lookBack),
      composed(checked.env),
      formerComposed(checked.env),
      formerFields(checked.env, checked.format) {}

void XelCsvKeyChecks::check(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields) {
  if (context.findings.isWanted(XelCsvCode::DuplicateKey)) checkDuplicate(table, line, fields);
  if (table.hasChosenKeys && table.keyPositions.size() > 1 && !table.hasKeyWithDash) checkDash(table, line, fields);
}

void XelCsvKeyChecks::checkDuplicate(XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                     const XelCsvFields& fields) {
  if (!compose(table, fields, composed)) return;
  const XelCsvSpan key = composed.getText();
  const XelCsvKeySet::Line* const former =
      table.keys.addOrFind(XelHashKey(key.begin, key.getLength()), {line.offset, line.line},
                           [&](const XelCsvKeySet::Line& candidate) { return isKeyOf(table, candidate, key); });
  if (former != nullptr) reportDuplicate(table, line, *former, key);
}

bool XelCsvKeyChecks::isKeyOf(const XelCsvCheckedTable& table, const XelCsvKeySet::Line& former,
                              const XelCsvSpan& key) {
  XelCsvLineMark mark;
  mark.offset = former.offset;
  formerFields.format(again.read(mark).text);
  return compose(table, formerFields, formerComposed) && isEqual(formerComposed.getText(), key);
}

void XelCsvKeyChecks::reportDuplicate(const XelCsvCheckedTable& table, const XelCsvCheckedLine& line,
                                      const XelCsvKeySet::Line& former, const XelCsvSpan& key) {
  if (!context.findings.takes(XelCsvCode::DuplicateKey, table.name)) return;
  std::string message = "line " + std::to_string(former.line) + " has the same key, " + XelQuoted(key);
  if (!table.hasChosenKeys) {
    const auto columns = static_cast<long>(table.keyPositions.size());
    message += " (without a key line it is made of " + XelCounted(columns, "column") + ")";
  }
  message += context.parameters.isMultiTable
                 ? ": for a cached table getTableByName throws XelDuplicatedLineException, one that is not "
                   "finds that line by the key"
                 : ": a cached reader silently reads that line again in place of this one and ends the table here; "
                   "one that is not finds that line by the key";
  context.findings.report(XelCsvCode::DuplicateKey, XelPlaceOf(line, line.getContent()), std::move(message));
}

// The values of a key are joined with "-", so that one which holds it may be taken for two. Told once in a table.
void XelCsvKeyChecks::checkDash(XelCsvCheckedTable& table, const XelCsvCheckedLine& line, const XelCsvFields& fields) {
  for (const long position : table.keyPositions) {
    if (position >= fields.getCount()) return;
    const XelCsvSpan value = fields.getTrimmed(position);
    if (std::find(value.begin, value.end, '-') == value.end) continue;
    table.hasKeyWithDash = true;
    if (!context.findings.takes(XelCsvCode::KeyWithDash, table.name)) return;
    context.findings.report(XelCsvCode::KeyWithDash, XelPlaceOf(line, XelRawField(line.text, context.format, position)),
                            XelQuoted(value) +
                                " holds a dash, with which the values of a key are joined: getLineByKey finds the "
                                "line by values that are split elsewhere too");
    return;
  }
}
