#include "tests/support/TableModel.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace model {

namespace {

constexpr const char* ReaderPrefix = "XelCsvReader::";

std::string withPrefix(const std::string& kind, const std::string& text) { return ReaderPrefix + kind + " : " + text; }

[[noreturn]] void raise(const std::string& kind, const std::string& text) {
  throw Failure(kind, withPrefix(kind, text));
}

bool isLineEnd(char c) { return c == '\0' || c == '\n' || c == '\r'; }

bool isIn(char c, const std::string& set) { return c != '\0' && set.find(c) != std::string::npos; }

bool isEmptyLine(const char* line) {
  while (*line == ' ' || *line == '\t') ++line;
  return isLineEnd(*line);
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

long skipLines(std::FILE* stream, char* buffer, char comment, long* lineNumber, long* offset) {
  bool isFound = false;
  while (!isFound && std::feof(stream) == 0 && std::ferror(stream) == 0) {
    if (offset != nullptr) *offset = std::ftell(stream);
    if (std::fgets(buffer, 10000, stream) != nullptr && buffer[0] != comment && !isEmptyLine(buffer)) isFound = true;
    ++*lineNumber;
  }
  return isFound ? 1 : 0;
}

// A last line that nothing follows and that formatting leaves as it is would be met again for ever.
bool isSettled(bool hadEnded, const std::string& before, const char* after, long fields) {
  return hadEnded && fields == 1 && before == after;
}

}  // namespace

Stream::Stream(const std::string& name) : file(std::fopen(name.c_str(), "rb")) {
  if (file == nullptr) {
    throw Failure(
        "XelFileNotFoundException",
        "While trying to open file " + name +
            " : No such file or directory. The specified file or directory does not exist or cannot be found. "
            "This message can occur whenever a specified file does not exist or a component of a path does not "
            "specify an existing directory. ");
  }
}

Stream::~Stream() { std::fclose(file); }

std::vector<TableEntry> scanTables(const std::string& file, const Settings& settings) {
  const Stream stream(file);
  std::vector<TableEntry> tables;
  const auto find = [&](const std::string& name) -> TableEntry* {
    for (TableEntry& table : tables) {
      if (table.name == name) return &table;
    }
    return nullptr;
  };
  Buffer buffer{};
  long lineNumber = -1;
  long offset = 0;
  std::string previous;
  const auto isNew = [&](const std::string& name) {
    return settings.isSplit ? find(name) == nullptr : name != previous;
  };
  const auto goOn = [&](const std::string& name) {
    TableEntry* table = find(name);
    if (table != nullptr) table->endOffset = offset;
  };
  while (skipLines(stream.get(), buffer.data(), settings.comment, &lineNumber, &offset) != 0) {
    std::string name;
    for (const char* at = buffer.data(); !isLineEnd(*at) && !isIn(*at, settings.separators); ++at) name += *at;
    name = trimmed(name);
    if (name.empty()) continue;
    if (!isNew(name)) {
      goOn(name);
      continue;
    }
    const std::size_t bar = name.find('|');
    if (bar != std::string::npos) {
      name = trimmed(name.substr(0, bar));
      if (!isNew(name)) {
        goOn(name);
        continue;
      }
    }
    if (find(name) != nullptr) {
      raise("XelDuplicatedTableException",
            "Another table with name " + name + " already exists. Table splitting is not specified. ");
    }
    tables.push_back({name, offset, lineNumber, offset});
    previous = name;
  }
  return tables;
}

Table::Table(const std::string& fileName, const Settings& fileSettings, const TableEntry* entry)
    : file(fileName), settings(fileSettings) {
  const Stream stream(file);
  long offset = 0;
  long lineNumber = 0;
  if (entry != nullptr) {
    name = entry->name;
    offset = entry->offset;
    lineNumber = entry->lineNumber;
    endOffset = entry->endOffset;
  } else {
    std::fseek(stream.get(), 0, SEEK_END);
    endOffset = std::ftell(stream.get());
  }
  std::fseek(stream.get(), offset, SEEK_SET);
  Buffer buffer{};
  if (std::fgets(buffer.data(), 10000, stream.get()) == nullptr) buffer[0] = '\0';
  formatLine(buffer.data());
  numberOfColumns = numberOfFields;
  const long marker = settings.isMultiTable ? 0 : 1;
  while (std::strchr(buffer.data(), '|') != nullptr && offset <= endOffset) {
    if (std::strstr(buffer.data(), "NAMES") != nullptr) {
      if (!settings.isMultiTable) numberOfColumns = numberOfFields - 1;
      hasHeading = true;
    }
    if (std::strstr(buffer.data(), "KEYS") != nullptr) {
      const Line line = makeLine(buffer.data(), lineNumber);
      if (!settings.isMultiTable && !hasHeading) numberOfColumns = numberOfFields - 1;
      for (long field = marker; field < numberOfFields; ++field) {
        const char* text = line.fields[static_cast<std::size_t>(field)].c_str();
        errno = 0;
        const long value = std::strtol(text, nullptr, 10);
        if (errno == ERANGE || value != static_cast<int>(value)) {
          const std::string place = "OVERFLOW while reading field " + std::to_string(field) + "  of line number " +
                                    std::to_string(lineNumber);
          raise("XelOverflowException",
                place + wording(" as integer", " in table " + name.value_or("") + " as integer"));
        }
        if (value == 1) keyPositions.push_back(field - marker);
      }
    }
    if (skip(stream.get(), buffer.data(), &lineNumber, &offset) == 0) break;
    formatLine(buffer.data());
  }
  firstDataOffset = offset;
  firstDataLineNumber = lineNumber;
  if (keyPositions.empty()) {
    for (long column = settings.isMultiTable ? 1 : 0; column < numberOfColumns; ++column)
      keyPositions.push_back(column);
  }
}

std::string Table::wording(const std::string& unnamed, const std::string& named) const {
  return name.has_value() ? named : unnamed;
}

long Table::skip(std::FILE* stream, char* buffer, long* lineNumber, long* offset) const {
  return skipLines(stream, buffer, settings.comment, lineNumber, offset);
}

void Table::formatLine(char* line) {
  char* write = line;
  long fields = 1;
  int quotes = 0;
  bool inQuotes = false;
  bool afterSeparator = false;
  for (const char* read = line; !isLineEnd(*read); ++read) {
    const char c = *read;
    if (isIn(c, settings.separators)) {
      if (inQuotes) {
        *write++ = c;
      } else if (c != ' ' || !afterSeparator) {
        *write++ = '\0';
        ++fields;
      }
      afterSeparator = true;
    } else if (c == settings.quote) {
      ++quotes;
      inQuotes = quotes == 1;
      if (quotes == 2) quotes = 0;
      afterSeparator = false;
    } else {
      *write++ = c == settings.decimal ? '.' : c;
      afterSeparator = false;
    }
  }
  *write = '\0';
  numberOfFields = fields;
}

Line Table::makeLine(const char* buffer, long number) const {
  Line line;
  line.number = number;
  for (long field = 0; field < numberOfFields; ++field) {
    line.fields.emplace_back(buffer);
    buffer += line.fields.back().size() + 1;
  }
  return line;
}

void Table::testFieldsForKeys(long lineNumber) const {
  const long keys = static_cast<long>(keyPositions.size());
  if (numberOfFields >= keys) return;
  const std::string text = "corrupted file the number of keys (" + std::to_string(keys) +
                           ") exceeds the number of fields of the current line (" + std::to_string(numberOfFields) +
                           "), line number " + std::to_string(lineNumber);
  raise("XelCsvReaderException", wording(text, text + " in table " + name.value_or("")));
}

// The key fields of the line are trimmed by it.
std::string Table::composeKey(Line& line) const {
  std::string key;
  for (std::size_t index = 0; index < keyPositions.size(); ++index) {
    const long position = keyPositions[index];
    if (position >= static_cast<long>(line.fields.size())) {
      const std::string text =
          "Field Not Found at position " + std::to_string(position) + " in line number " + std::to_string(line.number);
      raise("XelFieldNotFoundException",
            wording(text, text + ", in table " + name.value_or("")) + " while trying getStringByPosition");
    }
    std::string& field = line.fields[static_cast<std::size_t>(position)];
    field = trimmed(field);
    if (index > 0) key += "-";
    key += field;
  }
  return key;
}

Line Table::getLineByNumber(long number) {
  const Stream stream(file);
  std::fseek(stream.get(), firstDataOffset, SEEK_SET);
  Buffer buffer{};
  std::optional<Line> result;
  long count = -1;
  bool isMatch = true;
  long offset = firstDataOffset;
  long lineNumber = firstDataLineNumber - 1;
  while (number >= 0 && count < number && endOffset >= offset) {
    const bool hadEnded = std::feof(stream.get()) != 0;
    skip(stream.get(), buffer.data(), &lineNumber, &offset);
    const std::string before = buffer.data();
    formatLine(buffer.data());
    Line line = makeLine(buffer.data(), lineNumber);
    if (isNameTested()) {
      line.fields[0] = trimmed(line.fields[0]);
      isMatch = line.fields[0] == *name;
    }
    if (isMatch) ++count;
    if (isSettled(hadEnded, before, buffer.data(), numberOfFields)) {
      if (!isMatch) break;
      count = number;
    }
    if (count >= number) result = line;
  }
  if (result.has_value()) return *result;
  const std::string text = "No line number " + std::to_string(number);
  raise("XelLineNotFoundException", wording(text + " .", text + " in table " + name.value_or("") + "."));
}

Line Table::getLineByKey(const std::string& key) {
  const Stream stream(file);
  std::fseek(stream.get(), firstDataOffset, SEEK_SET);
  Buffer buffer{};
  long offset = firstDataOffset;
  long lineNumber = firstDataLineNumber - 1;
  while (skip(stream.get(), buffer.data(), &lineNumber, &offset) != 0 && offset <= endOffset) {
    formatLine(buffer.data());
    Line line = makeLine(buffer.data(), lineNumber);
    testFieldsForKeys(lineNumber);
    if (settings.isMultiTable && isNameTested()) {
      line.fields[0] = trimmed(line.fields[0]);
      if (line.fields[0] != *name) continue;
    }
    if (composeKey(line) == key) return line;
  }
  const std::string text = "No line having key " + key;
  raise("XelLineNotFoundException", wording(text + ".", text + " in table " + name.value_or("") + "."));
}

long Table::getNumberOfItems() {
  const Stream stream(file);
  std::fseek(stream.get(), firstDataOffset, SEEK_SET);
  Buffer buffer{};
  long offset = firstDataOffset;
  long lineNumber = firstDataLineNumber - 1;
  long count = 0;
  while (skip(stream.get(), buffer.data(), &lineNumber, &offset) != 0 && offset <= endOffset) {
    if (settings.isMultiTable && isNameTested()) {
      formatLine(buffer.data());
      if (trimmed(buffer.data()) != *name) continue;
    }
    ++count;
  }
  return count;
}

Index::Index(Table& indexed) : table(indexed) {
  const Stream stream(table.file);
  std::fseek(stream.get(), table.firstDataOffset, SEEK_SET);
  Buffer buffer{};
  long offset = table.firstDataOffset;
  long lineNumber = table.firstDataLineNumber - 1;
  while (table.skip(stream.get(), buffer.data(), &lineNumber, &offset) != 0 && offset <= table.endOffset) {
    table.formatLine(buffer.data());
    Line line = table.makeLine(buffer.data(), lineNumber);
    if (table.settings.isMultiTable && table.isNameTested() && trimmed(line.fields[0]) != *table.name) continue;
    table.testFieldsForKeys(lineNumber);
    const std::string key = table.composeKey(line);
    keys.push_back(key);
    if (!records.insert({key, {offset, lineNumber}}).second) {
      duplicatedKey = key;
      return;
    }
  }
}

Line Index::getLineByNumber(long number) {
  if (number >= 0 && number < getNumberOfItems()) return getLineByKey(keys[static_cast<std::size_t>(number)]);
  const std::string text = "No line number " + std::to_string(number);
  raise("XelLineNotFoundException", table.wording(text + " ", text + " in table " + table.name.value_or("")));
}

Line Index::getLineByKey(const std::string& key) {
  const auto record = records.find(key);
  if (record == records.end()) {
    const std::string text = "No line having key " + key;
    raise("XelLineNotFoundException", table.wording(text + " .", text + " in table " + table.name.value_or("") + "."));
  }
  const Stream stream(table.file);
  std::fseek(stream.get(), record->second.offset, SEEK_SET);
  Buffer buffer{};
  if (std::fgets(buffer.data(), 10000, stream.get()) == nullptr) buffer[0] = '\0';
  table.formatLine(buffer.data());
  return table.makeLine(buffer.data(), record->second.lineNumber);
}

ScanningIterator::ScanningIterator(Table& walked) : table(&walked) {
  stream.emplace(table->file);
  offset = table->firstDataOffset;
  lineNumber = table->firstDataLineNumber - 1;
  endOffset = table->endOffset;
  std::fseek(stream->get(), offset, SEEK_SET);
  if (table->skip(stream->get(), buffer.data(), &lineNumber, &offset) != 0) {
    build();
    ok = offset <= endOffset;
  }
}

ScanningIterator::ScanningIterator(ScanningIterator* source)
    : table(source->table),
      ok(source->ok && source->stream.has_value()),
      lineNumber(source->lineNumber),
      endOffset(source->endOffset),
      offset(source->offset) {
  source->clear();
  if (!ok) return;
  stream.emplace(table->file);
  std::fseek(stream->get(), offset, SEEK_SET);
  if (std::fgets(buffer.data(), 10000, stream->get()) == nullptr) buffer[0] = '\0';
  build();
}

void ScanningIterator::build() {
  table->formatLine(buffer.data());
  line = table->makeLine(buffer.data(), lineNumber);
}

// The first field, trimmed in the buffer too.
std::string ScanningIterator::getName() {
  const std::string field = trimmed(buffer.data());
  std::memcpy(buffer.data(), field.c_str(), field.size() + 1);
  line->fields[0] = field;
  return field;
}

void ScanningIterator::clear() {
  stream.reset();
  line.reset();
}

void ScanningIterator::next() {
  if (!stream.has_value()) {
    ok = false;
    return;
  }
  if (!table->settings.isMultiTable) {
    ok = table->skip(stream->get(), buffer.data(), &lineNumber, nullptr) != 0;
    if (ok) build();
  } else if (table->skip(stream->get(), buffer.data(), &lineNumber, &offset) == 0) {
    ok = false;
  } else {
    ok = offset <= endOffset;
    if (ok) {
      build();
      if (table->isNameTested()) {
        while (ok && getName() != *table->name) {
          const bool hadEnded = std::feof(stream->get()) != 0;
          table->skip(stream->get(), buffer.data(), &lineNumber, &offset);
          const std::string before = buffer.data();
          build();
          ok = offset <= endOffset;
          if (isSettled(hadEnded, before, buffer.data(), table->numberOfFields) && getName() != *table->name)
            ok = false;
        }
      }
    }
  }
  if (!ok) clear();
}

IndexIterator::IndexIterator(Index& walked) : index(&walked), ok(walked.getNumberOfItems() > 0) {
  if (ok) read();
}

IndexIterator::IndexIterator(IndexIterator* source)
    : index(source->index), position(source->position), ok(source->ok && source->line.has_value()) {
  source->line.reset();
  if (ok) read();
}

void IndexIterator::read() {
  const std::string& key = index->keys[static_cast<std::size_t>(position)];
  line = index->getLineByKey(key);
}

void IndexIterator::next() {
  if (!line.has_value()) {
    ok = false;
    return;
  }
  ++position;
  ok = position < index->getNumberOfItems();
  line.reset();
  if (ok) read();
}

std::string textOf(const Line& line) {
  std::string text = std::to_string(line.number) + ": ";
  for (const std::string& field : line.fields) text += "[" + field + "]";
  return text;
}

std::string textOf(const std::optional<Line>& line) { return line.has_value() ? textOf(*line) : "no line"; }

}  // namespace model
