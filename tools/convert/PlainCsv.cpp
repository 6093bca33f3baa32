#include "tools/convert/PlainCsv.h"

#include "tools/Errors.h"
#include "tools/text/Escape.h"

namespace xeltools {

void appendPlainField(std::string& record, std::string_view field, char separator) {
  const char special[] = {separator, '"', '\r', '\n', '\0'};
  const bool hasSpecial = field.find_first_of(static_cast<const char*>(special)) != std::string_view::npos;
  const bool hasOuterBlank = !field.empty() && (field.front() == ' ' || field.back() == ' ');
  if (!hasSpecial && !hasOuterBlank) {
    record += field;
    return;
  }
  record += '"';
  for (const char byte : field) {
    if (byte == '"') record += '"';
    record += byte;
  }
  record += '"';
}

std::string makePlainRecord(const std::vector<std::string>& fields, char separator) {
  if (fields.size() == 1 && fields.front().empty()) return "\"\"";
  std::string record;
  for (const std::string& field : fields) {
    if (&field != &fields.front()) record += separator;
    appendPlainField(record, field, separator);
  }
  return record;
}

PlainCsvReader::PlainCsvReader(const std::string& file, char fieldSeparator)
    : name(file), separator(fieldSeparator), stream(std::fopen(file.c_str(), "rb")) {
  if (!stream) throw UserError(makePrintable(file) + ": cannot be opened");
  waiting = std::getc(stream.get());
  if (waiting != 0xEF) return;
  const int second = std::getc(stream.get());
  const int third = std::getc(stream.get());
  if (second == 0xBB && third == 0xBF) {
    waiting = std::getc(stream.get());
  } else {
    std::rewind(stream.get());
    waiting = std::getc(stream.get());
  }
}

// Takes the byte that waits.
int PlainCsvReader::next() {
  const int taken = waiting;
  waiting = std::getc(stream.get());
  if (taken == '\n') ++line;
  return taken;
}

// The first quote is taken already.
void PlainCsvReader::readQuoted(std::string& field) {
  for (;;) {
    const int byte = next();
    if (byte == EOF) {
      throw UserError(makePrintable(name) + ", line " + std::to_string(recordLine) +
                      ": a quote is not closed; close it, or double the quotes that are text");
    }
    if (byte == '"' && waiting != '"') return;
    if (byte == '"') next();
    field += static_cast<char>(byte);
  }
}

bool PlainCsvReader::read(std::vector<std::string>& fields) {
  fields.clear();
  if (waiting == EOF) return false;
  recordLine = line;
  std::string field;
  bool isEmptyLine = true;
  for (;;) {
    const int byte = next();
    if (byte == '\r' && (waiting == '\n' || waiting == EOF)) continue;
    if (byte == '\n' || byte == EOF) break;
    isEmptyLine = false;
    if (byte == '"' && field.empty()) {
      readQuoted(field);
    } else if (byte == static_cast<unsigned char>(separator)) {
      fields.push_back(field);
      field.clear();
    } else {
      field += static_cast<char>(byte);
    }
  }
  if (!isEmptyLine) fields.push_back(field);
  return true;
}

}  // namespace xeltools
