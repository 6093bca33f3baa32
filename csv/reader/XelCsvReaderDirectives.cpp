#include "csv/line/XelCsvLineI.h"
#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"

namespace {

constexpr long FormatField = 1;
constexpr long RequiredByField = 1;
constexpr long VersionField = 2;

// The first data line of a directive table, with the table that it belongs to.
class Directive {
 public:
  Directive(XelCsvReaderI* reader, const char* name)
      : table(reader->getTableByName(name)), line(table->getLineByNumber(0)) {}

  // The trimmed text of a field; throws XelFieldNotFoundException, naming the operation.
  const char* getField(const char* operation, long position) const {
    line->check(operation, position);
    return line->trimField(position);
  }

 private:
  XelEnvOwner<XelCsvTableReaderI> table;
  XelEnvOwner<XelCsvLineI> line;
};

}  // namespace

// Kept: the format is read from the file each time, the two values of the schema only once (test:
// Directives.CsvFormatIsReadFromTheFileEachTime).
double XelCsvReaderI::getCsvFormat() {
  testReaderForMultitable("getCsvFormat");
  setCsvFormat();
  return csvFormat;
}

double XelCsvReaderI::getFileVersion() {
  testReaderForMultitable("getFileVersion");
  const bool isUnread = fileVersion == 0.0 && requiredBy == nullptr;
  if (isUnread) setRequiredByAndFileVersion();
  return fileVersion;
}

const char* XelCsvReaderI::getRequiredBy() {
  testReaderForMultitable("getRequiredBy");
  if (requiredBy == nullptr) setRequiredByAndFileVersion();
  return requiredBy;
}

void XelCsvReaderI::setCsvFormat() {
  const Directive directive(this, XelCsvFormatTable);
  csvFormat = parseFloat(directive.getField("getFloatByPosition", FormatField));
}

// Kept: the text is stored before the version is looked for, so it stays when the version is missing (test:
// Directives.RequiredByIsStoredBeforeTheVersionIsLookedFor).
void XelCsvReaderI::setRequiredByAndFileVersion() {
  const Directive directive(this, XelDataSchemaTable);
  // Both callers come only while there is no text.
  requiredBy = XelCopyString(env, directive.getField("getStringByPosition", RequiredByField)).release();
  fileVersion = parseFloat(directive.getField("getFloatByPosition", VersionField));
}
