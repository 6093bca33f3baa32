// The fields of lines: one getter call each, conversion of numbers, getters by heading.
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/goals/Goals.h"
#include "bench/support/Check.h"
#include "bench/support/Passes.h"

namespace bench {

namespace {

using benchmark::RegisterBenchmark;
using benchmark::State;

constexpr auto Unit = benchmark::kMillisecond;

// ---- one getter call for each field

void runGetters(State& state, const std::string& name) {
  const File& file = getFile(name);
  XelEnv env;
  XelCsvReader reader = openReader(env, file, false);
  Found found;
  for (auto _ : state) found = callGetters(reader, file);
  check(state, found.isAllOf(file.facts), "other lines or fields");
  reader.end();
  env.end();
}

// ---- the numeric columns as numbers

// Calls use(field, kind) for each numeric field of the first lines of a file, as the literal reader finds it.
template <typename Use>
void forEachNumber(const File& file, long lines, Use use) {
  const literal::Settings settings = settingsOf(file);
  std::vector<literal::Table> tables;
  if (file.input->isMultiTable) tables = literal::scanTables(settings);
  for (std::size_t table = 0; table == 0 || table < tables.size(); ++table) {
    const literal::Zone zone = readHeadingZone(settings, tables.empty() ? nullptr : &tables[table]);
    literal::Walk walk(settings, zone);
    while (lines > 0 && walk.next()) {
      --lines;
      for (std::size_t column = 0; column < file.input->columns.size(); ++column) {
        const Kind kind = file.input->columns[column];
        if (kind != Kind::Text) use(walk.getLine().fields[column], kind);
      }
    }
  }
}

// The bits of all numbers of a file, added up; made by strtod and strtol.
std::uint64_t addUpNumbersLiterally(const File& file) {
  std::uint64_t bits = 0;
  forEachNumber(file, file.facts.lines, [&bits](const char* field, Kind kind) {
    bits += kind == Kind::Integer ? bitsOf(std::strtol(field, nullptr, 10)) : bitsOf(std::strtod(field, nullptr));
  });
  return bits;
}

void runNumbers(State& state, const std::string& name) {
  const File& file = getFile(name);
  XelEnv env;
  XelCsvReader reader = openReader(env, file, false);
  std::uint64_t bits = 0;
  for (auto _ : state) bits = addUpNumbers(reader, file);
  check(state, bits == addUpNumbersLiterally(file), "other numbers");
  reader.end();
  env.end();
}

// What conversion alone costs with from_chars: as many numbers as the file has, from a few lines again and again, so that
// they lie in the cache.
void runFromChars(State& state, const std::string& name) {
  constexpr long Lines = 2000;
  struct Number {
    std::string text;
    Kind kind;
  };
  const File& file = getFile(name);
  std::vector<Number> numbers;
  forEachNumber(file, Lines, [&numbers](const char* field, Kind kind) { numbers.push_back({field, kind}); });
  std::uint64_t bits = 0;
  for (auto _ : state) {
    for (long line = 0; line < file.facts.lines; line += Lines) {
      for (const Number& number : numbers) {
        const char* end = number.text.data() + number.text.size();
        if (number.kind == Kind::Integer) {
          long value = 0;
          std::from_chars(number.text.data(), end, value);
          bits += bitsOf(value);
        } else {
          double value = 0.0;
          std::from_chars(number.text.data(), end, value);
          bits += bitsOf(value);
        }
      }
    }
  }
  benchmark::DoNotOptimize(bits);
}

// ---- by heading and by position

void runHeading(State& state, const std::string& name, bool byHeading) {
  const File& file = getFile(name);
  XelEnv env;
  XelCsvReader reader = openReader(env, file, true);
  const XelCsvLine line = reader.getLineByNumber(7);
  const long columns = line.getNumberOfFields();
  std::vector<std::string> headings;
  for (long column = 0; column < columns; ++column) headings.push_back("heading" + std::to_string(column));
  long column = 0;
  long wrong = 0;
  for (auto _ : state) {
    const char* text = byHeading ? line.getStringByHeader(headings[static_cast<std::size_t>(column)].c_str())
                                 : line.getStringByPosition(column);
    if (text != line.getFields()[column]) ++wrong;
    if (++column == columns) column = 0;
  }
  check(state, wrong == 0, "another field");
  reader.end();
  env.end();
}

}  // namespace

void registerFields() {
  for (const std::string name : {"wide", "wideq", "narrow", "multi"}) {
    RegisterBenchmark(("getters/" + name + "/library").c_str(), runGetters, name)->Unit(Unit);
    RegisterBenchmark(("numbers/" + name + "/library").c_str(), runNumbers, name)->Unit(Unit);
    RegisterBenchmark(("numbers/" + name + "/from_chars").c_str(), runFromChars, name)->Unit(Unit);
  }
  for (const std::string name : {"columns-5", "columns-500"}) {
    RegisterBenchmark(("field/" + name + "/heading").c_str(), runHeading, name, true);
    RegisterBenchmark(("field/" + name + "/position").c_str(), runHeading, name, false);
  }
}

}  // namespace bench
