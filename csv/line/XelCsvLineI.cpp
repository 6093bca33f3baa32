#include "csv/line/XelCsvLineI.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "csv/errors/XelCsvErrors.h"
#include "csv/line/XelCsvText.h"
#include "csv/table/XelCsvTableReaderI.h"

XelCsvLineI::XelCsvLineI(XelEnv environment, XelCsvTableReaderI* table) noexcept
    : tableReader(table), lineNumber(0), env(environment), numberOfFields(0) {}

XelCsvLineI::XelCsvLineI(const char* formatted, XelCsvTableReaderI* table, long number)
    : tableReader(table), lineNumber(number), env(table->getEnv()), numberOfFields(table->getNumberOfFields()) {
  init(formatted);
}

XelCsvLineI::XelCsvLineI(XelEnvBlock<char> formatted, XelCsvTableReaderI* table, long number)
    : tableReader(table), lineNumber(number), env(table->getEnv()), numberOfFields(table->getNumberOfFields()) {
  XelEnvBlock<char*> starts(env, numberOfFields);
  take(formatted, starts);
  setFieldsToLine(fields);
}

XelCsvLineI::XelCsvLineI(XelEnvBlock<char> formatted, char* const* starts, XelCsvTableReaderI* table, long number)
    : tableReader(table), lineNumber(number), env(table->getEnv()), numberOfFields(table->getNumberOfFields()) {
  XelEnvBlock<char*> copied(env, numberOfFields);
  std::copy_n(starts, numberOfFields, copied.get());
  take(formatted, copied);
}

XelCsvLineI::~XelCsvLineI() { clear(); }

void XelCsvLineI::take(XelEnvBlock<char>& newText, XelEnvBlock<char*>& newFields) noexcept {
  text = newText.release();
  fields = newFields.release();
  ownsStorage = true;
}

void XelCsvLineI::init(const char* formatted) {
  const long count = numberOfFields;
  XelEnvBlock<char*> newFields(env, count);
  XelEnvBlock<char> newText(env, XelLineSize);
  const long length = computeLength(formatted);
  if (length > 0) std::memcpy(newText.get(), formatted, static_cast<std::size_t>(length));
  newText[std::max(length - 1, 0L)] = '\0';
  clear();
  numberOfFields = count;
  take(newText, newFields);
  setFieldsToLine(fields);
}

char* XelCsvLineI::setFieldsToLine(char** starts) const noexcept {
  char* const last = text + XelLineSize - 1;
  char* at = text;
  for (long field = 0; field < numberOfFields; ++field) {
    starts[field] = std::min(at, last);
    if (at > last) continue;
    const void* end = std::memchr(at, '\0', static_cast<std::size_t>(last - at));
    at = end == nullptr ? last + 1 : text + (static_cast<const char*>(end) - text) + 1;
  }
  return at;
}

long XelCsvLineI::computeLength(const char* formatted) const noexcept {
  long length = 0;
  for (long field = 0; field < numberOfFields && length < XelLineSize; ++field) {
    length += XelTextLength(formatted + length, XelLineSize - length) + 1;
  }
  return std::min(length, XelLineSize);
}

void XelCsvLineI::buildCsvLine(char* formatted, char** starts, long number, XelCsvTableReaderI* table) noexcept {
  adoptFields(formatted, starts, number, table);
  setFieldsToLine(fields);
}

void XelCsvLineI::adoptFields(char* formatted, char** starts, long number, XelCsvTableReaderI* table) noexcept {
  clear();  // a copy into this record may have given it storage of its own
  text = formatted;
  fields = starts;
  tableReader = table;
  env = table->getEnv();  // and may have come from another environment
  lineNumber = number;
  numberOfFields = table->getNumberOfFields();
}

void XelCsvLineI::copy(const XelCsvLineI* other) {
  if (other == this) return;
  if (other == nullptr) {
    clear();
    return;
  }
  const long count = other->getNumberOfFields();
  XelEnvBlock<char*> newFields(other->env, count);
  XelEnvBlock<char> newText(other->env, XelLineSize);
  char* at = newText.get();
  char* const last = at + XelLineSize - 1;
  *at = '\0';
  *last = '\0';
  for (long field = 0; field < count; ++field) {
    newFields[field] = at;
    const char* from = other->fields[field];
    const long length = XelTextLength(from, last - at);
    std::memcpy(at, from, static_cast<std::size_t>(length));
    at[length] = '\0';
    at = std::min(at + length + 1, last);
  }
  clear();
  tableReader = other->tableReader;
  env = other->env;
  numberOfFields = count;
  lineNumber = other->lineNumber;
  take(newText, newFields);
}

void XelCsvLineI::swap(XelCsvLineI& other) noexcept {
  std::swap(text, other.text);
  std::swap(fields, other.fields);
  std::swap(tableReader, other.tableReader);
  std::swap(lineNumber, other.lineNumber);
  std::swap(env, other.env);
  std::swap(numberOfFields, other.numberOfFields);
  std::swap(ownsStorage, other.ownsStorage);
  ++changes;
  ++other.changes;
}

void XelCsvLineI::throwFieldNotFound(const char* operation, long position) const {
  const XelCsvSite at = tableReader == nullptr ? XelCsvSite{} : tableReader->getSite();
  XelCsvErrors::fieldNotFound(at, position, lineNumber, operation);
}

bool XelCsvLineI::emptyFieldByPosition(long position) const {
  check("emptyFieldByPosition", position);
  return fields[position][0] == '\0';
}

bool XelCsvLineI::emptyFieldByHeader(const char* heading) const {
  return emptyFieldByPosition(tableReader->getPosition(heading));
}

const char* XelCsvLineI::trim(char* field) noexcept {
  XelTrim(field);
  return field;
}

void XelCsvLineI::clear() noexcept {
  if (ownsStorage) {
    env.free(text, XelLineSize);
    env.free(fields, numberOfFields * static_cast<long>(sizeof(char*)));
  }
  text = nullptr;
  fields = nullptr;
  numberOfFields = 0;
  ownsStorage = false;
  ++changes;
}
