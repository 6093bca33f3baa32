#include "bench/literal/Literal.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

namespace literal {

namespace {

bool isEmpty(const char* line) {
  while (*line == ' ' || *line == '\t') ++line;
  return *line == '\n' || *line == '\r' || *line == '\0';
}

bool isSeparator(char byte, const Settings& settings, char maxSeparator) {
  return byte <= maxSeparator && byte != '\0' && std::strchr(settings.separators.c_str(), byte) != nullptr;
}

// Cuts the line behind its first field.
char* getFirstField(char* line, const Settings& settings, char maxSeparator) {
  char* at = line;
  while (*at != '\0' && *at != '\n' && *at != '\r' && !isSeparator(*at, settings, maxSeparator)) ++at;
  *at = '\0';
  return line;
}

void trim(char* text) {
  std::size_t blanks = 0;
  while (text[blanks] == ' ') ++blanks;
  std::size_t length = std::strlen(text + blanks);
  std::memmove(text, text + blanks, length + 1);
  while (length > 0 && text[length - 1] == ' ') text[--length] = '\0';
}

void seek(std::FILE* file, long offset) {
  if (std::fseek(file, offset, SEEK_SET) != 0) {
    std::perror("fseek");
    std::exit(1);
  }
}

void setFieldsToLine(Line& line, long numberOfFields) {
  line.numberOfFields = numberOfFields;
  char* at = line.text.data();
  for (long field = 0; field < numberOfFields; ++field) {
    line.fields[static_cast<std::size_t>(field)] = at;
    at += std::strlen(at) + 1;
  }
}

}  // namespace

Stream::Stream(const std::string& fileName) : file(std::fopen(fileName.c_str(), "rb")) {
  if (file == nullptr) {
    std::perror(fileName.c_str());
    std::exit(1);
  }
}

bool skipCommentAndEmptyLines(std::FILE* file, Buffer& buffer, char comment, long& lineNumber, long& offset) {
  bool found = false;
  while (!found && std::feof(file) == 0) {
    offset = std::ftell(file);
    const char* read = std::fgets(buffer.data(), LineSize, file);
    if (read != nullptr && buffer[0] != comment && !isEmpty(buffer.data())) found = true;
    ++lineNumber;
  }
  return found;
}

long formatLine(char* line, const Settings& settings, char maxSeparator) {
  const char* from = line;
  char* to = line;
  long fields = 1;
  bool isQuoted = false;
  bool wasSeparator = false;
  for (; *from != '\0' && *from != '\n' && *from != '\r'; ++from) {
    if (isSeparator(*from, settings, maxSeparator)) {
      if (isQuoted) {
        *to++ = *from;
      } else if (*from != ' ' || !wasSeparator) {
        *to++ = '\0';
        ++fields;
      }
      wasSeparator = true;
    } else if (*from == settings.quote) {
      isQuoted = !isQuoted;
      wasSeparator = false;
    } else {
      *to++ = *from == settings.decimal ? '.' : *from;
      wasSeparator = false;
    }
  }
  *to = '\0';
  return fields;
}

char maxSeparatorOf(const Settings& settings) {
  signed char greatest = 0;
  for (const char byte : settings.separators) {
    if (static_cast<signed char>(byte) > greatest) greatest = static_cast<signed char>(byte);
  }
  return static_cast<char>(greatest);
}

std::vector<Table> scanTables(const Settings& settings) {
  const Stream stream(settings.fileName);
  const char maxSeparator = maxSeparatorOf(settings);
  std::vector<Table> tables;
  std::set<std::string> names;
  Buffer buffer{};
  long lineNumber = -1;
  long offset = 0;
  while (skipCommentAndEmptyLines(stream.get(), buffer, settings.comment, lineNumber, offset)) {
    char* name = getFirstField(buffer.data(), settings, maxSeparator);
    trim(name);
    if (*name == '\0') continue;
    if (tables.empty() || tables.back().name != name) {
      if (char* bar = std::strchr(name, '|')) {
        *bar = '\0';
        trim(name);
      }
    }
    if (!tables.empty() && tables.back().name == name) {
      tables.back().endOffset = offset;
      continue;
    }
    if (!names.insert(name).second) return tables;
    tables.push_back({name, offset, lineNumber, offset});
  }
  return tables;
}

Zone readHeadingZone(const Settings& settings, const Table* table) {
  const Stream stream(settings.fileName);
  const char maxSeparator = maxSeparatorOf(settings);
  Zone zone;
  long offset = 0;
  long lineNumber = 0;
  if (table != nullptr) {
    offset = table->offset;
    lineNumber = table->lineNumber;
    zone.endOffset = table->endOffset;
  } else {
    if (std::fseek(stream.get(), 0, SEEK_END) != 0) std::perror("fseek");
    zone.endOffset = std::ftell(stream.get());
  }
  seek(stream.get(), offset);

  const auto line = std::make_unique<Line>();
  line->text[0] = '\0';
  const long firstColumn = settings.isMultiTable ? 0 : 1;
  if (std::fgets(line->text.data(), LineSize, stream.get()) == nullptr) line->text[0] = '\0';
  setFieldsToLine(*line, formatLine(line->text.data(), settings, maxSeparator));
  long columns = line->numberOfFields;
  bool hasHeading = false;
  bool hasKeyLine = false;
  while (std::strchr(line->text.data(), '|') != nullptr && offset <= zone.endOffset) {
    if (std::strstr(line->text.data(), "NAMES") != nullptr) {
      if (!settings.isMultiTable) columns = line->numberOfFields - 1;
      hasHeading = true;
    }
    if (std::strstr(line->text.data(), "KEYS") != nullptr) {
      if (!settings.isMultiTable && !hasHeading && !hasKeyLine) columns = line->numberOfFields - 1;
      hasKeyLine = true;
      for (long field = firstColumn; field < line->numberOfFields; ++field) {
        const bool isKey = std::strtol(line->fields[static_cast<std::size_t>(field)], nullptr, 10) == 1;
        if (isKey) zone.keyPositions.push_back(field - firstColumn);
      }
    }
    if (!skipCommentAndEmptyLines(stream.get(), line->text, settings.comment, lineNumber, offset)) break;
    setFieldsToLine(*line, formatLine(line->text.data(), settings, maxSeparator));
  }
  zone.firstDataOffset = offset;
  zone.firstDataLineNumber = lineNumber;
  if (zone.keyPositions.empty()) {
    for (long position = settings.isMultiTable ? 1 : 0; position < columns; ++position) {
      zone.keyPositions.push_back(position);
    }
  }
  return zone;
}

Walk::Walk(const Settings& fileSettings, const Zone& tableZone)
    : settings(fileSettings),
      zone(tableZone),
      stream(fileSettings.fileName),
      maxSeparator(maxSeparatorOf(fileSettings)),
      offset(tableZone.firstDataOffset) {
  seek(stream.get(), offset);
  line.text[0] = '\0';
  line.lineNumber = zone.firstDataLineNumber - 1;
}

bool Walk::next() {
  const bool isRead = skipCommentAndEmptyLines(stream.get(), line.text, settings.comment, line.lineNumber, offset);
  if (!isRead || offset > zone.endOffset) return false;
  setFieldsToLine(line, formatLine(line.text.data(), settings, maxSeparator));
  return true;
}

std::string composeKey(const Line& line, const Zone& zone) {
  std::string key;
  for (const long position : zone.keyPositions) {
    if (position != zone.keyPositions.front()) key += '-';
    char* field = line.fields[static_cast<std::size_t>(position)];
    trim(field);
    key += field;
  }
  return key;
}

long countLines(const Settings& settings, const Zone& zone) {
  const Stream stream(settings.fileName);
  seek(stream.get(), zone.firstDataOffset);
  Buffer buffer{};
  long lineNumber = zone.firstDataLineNumber - 1;
  long offset = zone.firstDataOffset;
  long count = 0;
  while (skipCommentAndEmptyLines(stream.get(), buffer, settings.comment, lineNumber, offset) &&
         offset <= zone.endOffset) {
    ++count;
  }
  return count;
}

long findLine(const Settings& settings, const Zone& zone, const std::string& key) {
  Walk walk(settings, zone);
  const auto record = std::make_unique<Line>();
  while (walk.next()) {
    record->text = walk.getLine().text;
    setFieldsToLine(*record, walk.getLine().numberOfFields);
    if (composeKey(*record, zone) == key) return walk.getLine().lineNumber;
  }
  return -1;
}

Index::Index(const Settings& fileSettings, const Zone& tableZone) : settings(fileSettings) {
  Walk walk(settings, tableZone);
  const auto record = std::make_unique<Line>();
  while (walk.next()) {
    record->text = walk.getLine().text;
    setFieldsToLine(*record, walk.getLine().numberOfFields);
    const std::string key = composeKey(*record, tableZone);
    if (find(key) != nullptr) return;
    add(key, walk.getOffset(), walk.getLine().lineNumber);
  }
}

Index::~Index() {
  for (Item* item : buckets) {
    while (item != nullptr) {
      const std::unique_ptr<Item> ended(item);
      item = ended->next;
    }
  }
}

bool Index::read(const std::string& key, Line& line) const {
  const Item* item = find(key);
  if (item == nullptr) return false;
  const Stream stream(settings.fileName);
  seek(stream.get(), item->offset);
  Buffer buffer{};
  if (std::fgets(buffer.data(), LineSize, stream.get()) == nullptr) return false;
  const long numberOfFields = formatLine(buffer.data(), settings, maxSeparatorOf(settings));
  line.text = buffer;
  line.lineNumber = item->lineNumber;
  setFieldsToLine(line, numberOfFields);
  return true;
}

unsigned long Index::hash(const std::string& key) {
  unsigned long sum = 0;
  for (const char byte : key) {
    sum = (sum << 4U) + static_cast<unsigned long>(static_cast<long>(static_cast<signed char>(byte)));
    const unsigned long high = sum & 0xF0000000U;
    if (high != 0) sum = (sum ^ (high >> 24U)) ^ high;
  }
  return sum;
}

const Index::Item* Index::find(const std::string& key) const {
  const Item* item = buckets[hash(key) % buckets.size()];
  while (item != nullptr && item->key != key) item = item->next;
  return item;
}

void Index::add(const std::string& key, long offset, long lineNumber) {
  Item*& head = buckets[hash(key) % buckets.size()];
  head = std::make_unique<Item>(Item{head, key, offset, lineNumber}).release();
  ++count;
  if (count > 2 * static_cast<long>(buckets.size())) grow();
}

void Index::grow() {
  std::vector<Item*> larger(2 * buckets.size(), nullptr);
  for (Item* item : buckets) {
    while (item != nullptr) {
      Item* next = item->next;
      Item*& head = larger[hash(item->key) % larger.size()];
      item->next = head;
      head = item;
      item = next;
    }
  }
  buckets.swap(larger);
}

}  // namespace literal
