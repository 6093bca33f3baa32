#include "xelcsv/XelCsvLine.h"

#include <cassert>
#include <iostream>

#include "csv/errors/XelCsvErrors.h"
#include "csv/line/XelCsvLineI.h"
#include "csv/line/XelCsvNumbers.h"
#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "xelcsv/XelCsvTableReader.h"

namespace {

// The field at a position, after the check that names the operation.
const char* getField(const XelCsvLineI* line, const char* operation, long position) {
  assert(line != nullptr);
  line->check(operation, position);
  return line->getFields()[position];
}

long findPosition(const XelCsvLineI* line, const char* heading) {
  assert(line != nullptr);
  return line->getTableReader()->getPosition(heading);
}

}  // namespace

XelCsvLine::XelCsvLine(const char* text, XelCsvTableReader tableReader, long lineNumber) {
  XelCsvTableReaderI* table = tableReader.getImpl();
  assert(table != nullptr);
  impl = XelNew<XelCsvLineI>(table->getEnv(), text, table, lineNumber).release();
  users = true;
}

double XelCsvLine::getFloatByPosition(long position) const {
  getField(impl, "getFloatByPosition", position);
  return impl->getTableReader()->getReader()->parseFloat(impl->trimField(position));
}

long XelCsvLine::getIntByPosition(long position) const {
  const char* field = getField(impl, "getIntByPosition", position);
  const XelCsvTableReaderI* table = impl->getTableReader();
  long overflow = 0;
  const long value = table->getReader()->parseInt(field, overflow);
  if (overflow != 0) XelCsvErrors::overflow(table->getSite(), position, impl->getLineNumber());
  return value;
}

const char* XelCsvLine::getStringByPosition(long position) const {
  getField(impl, "getStringByPosition", position);
  return impl->trimField(position);
}

double XelCsvLine::getFloatByHeader(const char* heading) const {
  return getFloatByPosition(findPosition(impl, heading));
}

long XelCsvLine::getIntByHeader(const char* heading) const { return getIntByPosition(findPosition(impl, heading)); }

const char* XelCsvLine::getStringByHeader(const char* heading) const {
  return getStringByPosition(findPosition(impl, heading));
}

// Kept: the getters with a default value convert by themselves, not through the reader's parseFloat and parseInt, know
// "U", and word an overflow in their own way (tests: LineGetters.OrDefaultValue...).
double XelCsvLine::getFloatByPositionOrDefaultValue(long position, double value) const {
  if (*getField(impl, "getFloatByPositionOrDefaultValue", position) == '\0') return value;
  return XelParseFloatOrUnbounded(impl->trimField(position));
}

double XelCsvLine::getFloatByHeaderOrDefaultValue(const char* heading, double value) const {
  return getFloatByPositionOrDefaultValue(findPosition(impl, heading), value);
}

long XelCsvLine::getIntByPositionOrDefaultValue(long position, long value) const {
  const char* field = getField(impl, "getIntByPositionOrDefaultValue", position);
  if (*field == '\0') return value;
  long found = 0;
  if (!XelParseIntIgnoringErrno(field, found)) {
    XelCsvErrors::overflowBesideDefault(impl->getTableReader()->getSite(), position, impl->getLineNumber());
  }
  return found;
}

long XelCsvLine::getIntByHeaderOrDefaultValue(const char* heading, long value) const {
  return getIntByPositionOrDefaultValue(findPosition(impl, heading), value);
}

const char* XelCsvLine::getStringByPositionOrDefaultValue(long position, const char* value) const {
  if (*getField(impl, "getStringByPositionOrDefaultValue", position) == '\0') return value;
  return impl->trimField(position);
}

const char* XelCsvLine::getStringByHeaderOrDefaultValue(const char* heading, const char* value) const {
  return getStringByPositionOrDefaultValue(findPosition(impl, heading), value);
}

bool XelCsvLine::emptyFieldByPosition(long position) const {
  assert(impl != nullptr);
  return impl->emptyFieldByPosition(position);
}

bool XelCsvLine::emptyFieldByHeader(const char* heading) const {
  assert(impl != nullptr);
  return impl->emptyFieldByHeader(heading);
}

long XelCsvLine::getLineNumber() const {
  assert(impl != nullptr);
  return impl->getLineNumber();
}

long XelCsvLine::getNumberOfFields() const {
  assert(impl != nullptr);
  return impl->getNumberOfFields();
}

char** XelCsvLine::getFields() const {
  assert(impl != nullptr);
  return impl->getFields();
}

XelEnv XelCsvLine::getEnv() const {
  assert(impl != nullptr);
  return impl->getEnv();
}

bool XelCsvLine::printValueOfKeys() const {
  assert(impl != nullptr);
  if (impl->getText() == nullptr || impl->getFields() == nullptr) {
    std::cout << "Empty Line!" << std::endl;
    return true;
  }
  const XelCsvTableReaderI* table = impl->getTableReader();
  const long numberOfKeys = table->getNumberOfKeys();
  if (numberOfKeys == 0) {
    std::cout << "There is no key for line number " << impl->getLineNumber() << std::endl;
    return true;
  }
  const XelCsvLineI* headings = table->getHeadingLine();
  for (long key = 0; key < numberOfKeys; ++key) {
    const long position = table->getKeyPosition(key);
    std::cout << "Key " << key << " (";
    if (headings != nullptr) {
      headings->check("getStringByPosition", position);
      std::cout << headings->trimField(position);
    } else {
      std::cout << "Column " << position;
    }
    // A key position past the end of a short line has no value to print.
    std::cout << ") = " << (position < impl->getNumberOfFields() ? impl->getFields()[position] : "") << std::endl;
  }
  return true;
}

void XelCsvLine::copy(const XelCsvLine& other) {
  if (other.impl == nullptr) {
    if (impl != nullptr) impl->clear();
    return;
  }
  if (impl != nullptr) {
    impl->copy(other.impl);
    return;
  }
  const XelEnv env = other.impl->getEnv();
  XelEnvOwner<XelCsvLineI> record = XelNew<XelCsvLineI>(env, env, static_cast<XelCsvTableReaderI*>(nullptr));
  record->copy(other.impl);
  impl = record.release();
  users = true;
}

void XelCsvLine::end() {
  if (users) delete impl;
  impl = nullptr;
  users = false;
}
