#include "bench/support/Passes.h"

#include <csv.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace bench {

namespace {

void iterateLiterally(const literal::Settings& settings, const literal::Table* table, Found& found) {
  const literal::Zone zone = readHeadingZone(settings, table);
  literal::Walk walk(settings, zone);
  while (walk.next()) {
    const literal::Line& line = walk.getLine();
    ++found.lines;
    found.fields += line.numberOfFields;
    found.sum += static_cast<unsigned char>(*line.fields[static_cast<std::size_t>(line.numberOfFields - 1)]);
  }
}

}  // namespace

XelCsvReader openReader(XelEnv env, const File& file, bool isCached) {
  return XelCsvReader(env, file.name.c_str(), file.input->isMultiTable ? 1 : 0, 0, file.input->separators,
                      file.input->decimal, '"', '#', isCached ? 1 : 0);
}

Found iterate(XelCsvReader& reader, const File& file) {
  Found found;
  forEachLine(reader, file, [&found](const XelCsvLine& line) {
    const long count = line.getNumberOfFields();
    ++found.lines;
    found.fields += count;
    found.sum += static_cast<unsigned char>(*line.getFields()[count - 1]);
  });
  return found;
}

Found iterateLiterally(const File& file) {
  const literal::Settings settings = settingsOf(file);
  Found found;
  if (!file.input->isMultiTable) {
    iterateLiterally(settings, nullptr, found);
    return found;
  }
  for (const literal::Table& table : literal::scanTables(settings)) iterateLiterally(settings, &table, found);
  return found;
}

Found callGetters(XelCsvReader& reader, const File& file) {
  Found found;
  forEachLine(reader, file, [&found](const XelCsvLine& line) {
    const long count = line.getNumberOfFields();
    const char* text = nullptr;
    for (long position = 0; position < count; ++position) text = line.getStringByPosition(position);
    ++found.lines;
    found.fields += count;
    found.sum += static_cast<unsigned char>(*text);
  });
  return found;
}

std::uint64_t bitsOf(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

std::uint64_t bitsOf(long value) { return static_cast<std::uint64_t>(value); }

std::uint64_t addUpNumbers(XelCsvReader& reader, const File& file) {
  const std::vector<Kind>& kinds = file.input->columns;
  std::uint64_t bits = 0;
  forEachLine(reader, file, [&bits, &kinds](const XelCsvLine& line) {
    for (std::size_t column = 0; column < kinds.size(); ++column) {
      const long position = static_cast<long>(column);
      if (kinds[column] == Kind::Integer) bits += bitsOf(line.getIntByPosition(position));
      if (kinds[column] == Kind::Float) bits += bitsOf(line.getFloatByPosition(position));
    }
  });
  return bits;
}

long makeDirectory(XelEnv env, const File& file) {
  XelCsvReader reader = openReader(env, file, false);
  const long tables = reader.getNumberOfTables();
  reader.end();
  return tables;
}

long makeDirectoryLiterally(const File& file) {
  return static_cast<long>(literal::scanTables(settingsOf(file)).size());
}

long countFieldsByLibcsv(const File& file) {
  static std::vector<char> block(std::size_t{256} * 1024);
  const literal::Stream stream(file.name);
  csv_parser parser;
  if (csv_init(&parser, CSV_APPEND_NULL) != 0) std::exit(1);
  csv_set_delim(&parser, static_cast<unsigned char>(*file.input->separators));
  const auto countField = [](void* text, std::size_t length, void* count) {
    if (text != nullptr || length == 0) ++*static_cast<long*>(count);
  };
  long fields = 0;
  for (;;) {
    const std::size_t length = std::fread(block.data(), 1, block.size(), stream.get());
    if (length == 0) break;
    if (csv_parse(&parser, block.data(), length, countField, nullptr, &fields) != length) break;
  }
  csv_fini(&parser, countField, nullptr, &fields);
  csv_free(&parser);
  return fields;
}

}  // namespace bench
