#include "check/XelCsvCheckPass.h"

#include "check/XelCsvMessage.h"

namespace {

constexpr long ProgressStep = 1L << 20;

}  // namespace

XelCsvCheckPass::XelCsvCheckPass(const XelCsvCheckContext& checked)
    : context(checked),
      lines(checked.env),
      fields(checked.env, checked.format),
      again(checked),
      bytes(checked),
      quotes(checked),
      tables(checked, zones),
      headings(checked, again, zones),
      contents(checked),
      keys(checked, again),
      columns(checked, again) {}

void XelCsvCheckPass::run(const XelCsvProgress& progress) {
  XelCsvFindings& findings = context.findings;
  const int error = lines.open(context.fileName.c_str(), "rb", XelCsvReach::ManyLines);
  if (error != 0) XelThrowOpenError(error, context.fileName.c_str());
  long told = 0;
  while (!findings.isStopped() && readLine()) {
    checkLine();
    if (progress && lines.getOffset() - told >= ProgressStep) {
      told = lines.getOffset();
      if (!progress(told)) findings.stop();
    }
  }
  // Half a file that reads well is no clean file.
  if (lines.hasFailed()) XelThrowOpenError(lines.getReadError(), context.fileName.c_str());
  XelCsvCheckResult& result = findings.getResult();
  result.bytes = lines.getOffset();
  result.lines = line.number + 1;
  result.tables = context.parameters.isMultiTable ? tables.getNumberOfTables() : 1;
  if (!findings.isStopped()) finish();
}

// The line before tells where this one stands in the line that people see.
bool XelCsvCheckPass::readLine() {
  const bool isFirst = line.number < 0;
  const bool isNew = isFirst || line.hasLineFeed();
  const long before = isNew ? 0 : line.before + line.text.getLength();
  const long offset = lines.getOffset();
  if (!lines.read()) return false;
  line.text = lines.getLine();
  line.offset = offset;
  ++line.number;
  if (isNew && !isFirst) ++line.line;
  line.before = before;
  return true;
}

void XelCsvCheckPass::checkLine() {
  tableOfHeading = nullptr;
  bytes.check(line);
  if (context.findings.isStopped()) return;
  const bool isComment = *line.text.begin == context.parameters.comment;
  if (isComment || XelIsEmptyLine(line.text.begin, line.text.end)) {
    if (line.number == 0 && !context.parameters.isMultiTable) {
      headings.passFirstLine(*tables.getUniqueTable(), line, fields);
    }
    return;
  }
  quotes.check(line);
  checkTableLine();
}

// A line that was meant for a comment or for the headings, and is one of data for the library, has a key for the library
// and no values that mean anything.
void XelCsvCheckPass::checkTableLine() {
  const bool isMeantForComment = hasBlankBeforeComment();
  if (isMeantForComment) reportCommentWithBlank();
  XelCsvCheckedTable* const table = tables.find(line);
  if (const std::unique_ptr<XelCsvCheckedTable> complete = tables.takeComplete()) finishTable(*complete);
  if (table == nullptr) {
    headings.passOtherLine();
    return;
  }
  if (table->isRepeated) return;
  fields.format(line.text);
  const XelCsvHeadingChecks::Kind kind = headings.check(*table, line, fields);
  using Kind = XelCsvHeadingChecks::Kind;
  if (kind == Kind::Heading) tableOfHeading = table;
  if (kind == Kind::Heading || kind == Kind::Skipped || !isOwn(*table)) return;
  if (kind == Kind::LostHeading || isMeantForComment) {
    contents.checkUnintended(*table, line, fields);
  } else if (contents.check(*table, line, fields)) {
    // Where fields are missing or too many, nobody knows which column a value belongs to.
    columns.check(*table, line, fields);
  }
  keys.check(*table, line, fields);
  ++table->dataLines;
}

// With table splitting a table reads the lines whose formatted first field is its name, which a name with quotes never is.
bool XelCsvCheckPass::isOwn(const XelCsvCheckedTable& table) const {
  if (!context.isSplit()) return true;
  const XelCsvSpan first = fields.getTrimmed(0);
  return table.name.compare(0, std::string::npos, first.begin, static_cast<std::size_t>(first.getLength())) == 0;
}

bool XelCsvCheckPass::hasBlankBeforeComment() const {
  const char* at = line.text.begin;
  while (at != line.text.end && (*at == ' ' || *at == '\t')) ++at;
  return at != line.text.begin && at != line.text.end && *at == context.parameters.comment;
}

void XelCsvCheckPass::reportCommentWithBlank() {
  if (!context.findings.takes(XelCsvCode::CommentWithBlank)) return;
  std::string message =
      "a comment begins with the first byte of its line; behind a blank this reads silently as a line ";
  if (context.parameters.isMultiTable) {
    const XelCsvSpan name = XelFirstField(line.text.begin, line.text.end, context.format);
    message += "of a table called " + XelQuoted(XelTrimmed(name.begin, name.end));
  } else {
    message += "of data";
  }
  context.findings.report(XelCsvCode::CommentWithBlank, XelPlaceOf(line, line.getContent()), std::move(message));
}

void XelCsvCheckPass::finish() {
  // A heading or key line that ends the file without a line feed is its table's line of data too; with table splitting it
  // does not begin with the table's name alone and is none.
  const bool isData = tableOfHeading != nullptr && !line.hasLineFeed() && !context.isSplit();
  bytes.end(line, isData);
  if (isData) {
    headings.finish(*tableOfHeading);
    contents.checkUnintended(*tableOfHeading, line, fields);
    keys.check(*tableOfHeading, line, fields);
    ++tableOfHeading->dataLines;
  }
  for (const auto& table : tables.takeRest()) finishTable(*table);
  if (context.parameters.isMultiTable && tables.getNumberOfTables() == 0) contents.reportNoTable();
}

void XelCsvCheckPass::finishTable(XelCsvCheckedTable& table) {
  if (table.isRepeated) return;
  headings.finish(table);
  columns.finish(table);
  contents.finish(table);
}
