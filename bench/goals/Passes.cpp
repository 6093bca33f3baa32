// Passes over a whole file: floor, directory, iteration, counting and searching without an index.
#include "bench/support/Passes.h"

#include <string>

#include "bench/goals/Goals.h"
#include "bench/support/Check.h"
#include "bench/support/Floors.h"
#include "bench/support/Sqlite.h"
#include "bench/support/Wanted.h"

namespace bench {

namespace {

using benchmark::RegisterBenchmark;
using benchmark::State;

constexpr auto Unit = benchmark::kMillisecond;

void setBytes(State& state, const File& file) {
  state.SetBytesProcessed(static_cast<long>(state.iterations()) * file.facts.bytes);
}

void runFloor(State& state, const std::string& name) {
  const File& file = getFile(name);
  long lineEnds = 0;
  for (auto _ : state) lineEnds = countLineFeeds(file.name);
  check(state, lineEnds == file.facts.lineEnds, "another number of line ends");
  setBytes(state, file);
}

void runDirectory(State& state, const std::string& name) {
  const File& file = getFile(name);
  XelEnv env;
  long tables = 0;
  for (auto _ : state) tables = makeDirectory(env, file);
  check(state, tables == makeDirectoryLiterally(file), "another number of tables");
  setBytes(state, file);
  state.counters["lines"] = static_cast<double>(file.facts.lines);
  env.end();
}

// A table by its name, made and ended.
void runTables(State& state, const std::string& name) {
  const File& file = getFile(name);
  XelEnv env;
  XelCsvReader reader = openReader(env, file, false);
  const long tables = reader.getNumberOfTables();
  long table = 0;
  long columns = 0;
  for (auto _ : state) {
    std::string tableName = std::to_string(table);
    tableName.insert(0, 6 - tableName.size(), '0');
    tableName.insert(0, "Table");
    XelCsvTableReader made = reader.getTableByName(tableName.c_str());
    columns = made.getNumberOfColumns();
    made.end();
    table = (table + 7919) % tables;
  }
  check(state, columns == file.facts.fields / file.facts.lines, "another number of columns");
  reader.end();
  env.end();
}

void runDirectoryLiterally(State& state, const std::string& name) {
  const File& file = getFile(name);
  long tables = 0;
  for (auto _ : state) tables = makeDirectoryLiterally(file);
  check(state, tables == 50, "another number of tables");
  setBytes(state, file);
}

void runIteration(State& state, const std::string& name, bool isCached) {
  const File& file = getFile(name);
  XelEnv env;
  XelCsvReader reader = openReader(env, file, isCached);
  Found found;
  for (auto _ : state) found = iterate(reader, file);
  check(state, found.isAllOf(file.facts), "other lines or fields");
  setBytes(state, file);
  state.counters["lines"] = static_cast<double>(file.facts.lines);
  state.counters["fields"] = static_cast<double>(file.facts.fields);
  reader.end();
  env.end();
}

void runIterationLiterally(State& state, const std::string& name) {
  const File& file = getFile(name);
  Found found;
  for (auto _ : state) found = iterateLiterally(file);
  check(state, found.isAllOf(file.facts), "other lines or fields");
  setBytes(state, file);
}

void runLibcsv(State& state, const std::string& name) {
  const File& file = getFile(name);
  long fields = 0;
  for (auto _ : state) fields = countFieldsByLibcsv(file);
  check(state, fields >= file.facts.fields, "fields are missing");
  setBytes(state, file);
}

// The last column alone is asked for; the rows before it have to be cut up all the same.
void runSqlite(State& state, const std::string& name) {
  const File& file = getFile(name);
  Sqlite database(file);
  const std::string lastColumn = "column_" + std::to_string(file.facts.fields / file.facts.lines);
  long rows = 0;
  for (auto _ : state) rows = database.ask("select count(" + lastColumn + ") from csv");
  check(state, rows >= file.facts.lines, "lines are missing");
  setBytes(state, file);
}

void runCount(State& state, const std::string& name) {
  const File& file = getFile(name);
  XelEnv env;
  XelCsvReader reader = openReader(env, file, false);
  long lines = 0;
  for (auto _ : state) lines = reader.getNumberOfItems();
  check(state, lines == file.facts.lines, "another number of lines");
  setBytes(state, file);
  reader.end();
  env.end();
}

void runCountLiterally(State& state, const std::string& name) {
  const File& file = getFile(name);
  const literal::Settings settings = settingsOf(file);
  const literal::Zone zone = readHeadingZone(settings, nullptr);
  long lines = 0;
  for (auto _ : state) lines = countLines(settings, zone);
  check(state, lines == file.facts.lines, "another number of lines");
  setBytes(state, file);
}

void runSearch(State& state, const std::string& name) {
  const File& file = getFile(name);
  const std::string key = lastKeyOf(file);
  XelEnv env;
  XelCsvReader reader = openReader(env, file, false);
  long lineNumber = 0;
  for (auto _ : state) lineNumber = reader.getLineByKey(1, key.c_str()).getLineNumber();
  check(state, lineNumber == file.facts.lineEnds - 1, "not the last line");
  setBytes(state, file);
  reader.end();
  env.end();
}

void runSearchLiterally(State& state, const std::string& name) {
  const File& file = getFile(name);
  const std::string key = lastKeyOf(file);
  const literal::Settings settings = settingsOf(file);
  const literal::Zone zone = readHeadingZone(settings, nullptr);
  long lineNumber = 0;
  for (auto _ : state) lineNumber = findLine(settings, zone, key);
  check(state, lineNumber == file.facts.lineEnds - 1, "not the last line");
  setBytes(state, file);
}

}  // namespace

void registerPasses() {
  for (const std::string name : {"multi"}) {
    RegisterBenchmark(("directory/" + name + "/library").c_str(), runDirectory, name)->Unit(Unit);
    RegisterBenchmark(("directory/" + name + "/literal").c_str(), runDirectoryLiterally, name)->Unit(Unit);
  }
  for (const std::string name : {"wide", "wideq", "narrow", "multi", "twokey", "keylast"}) {
    RegisterBenchmark(("floor/" + name).c_str(), runFloor, name)->Unit(Unit);
  }
  for (const std::string name : {"wide", "wideq", "narrow", "multi"}) {
    RegisterBenchmark(("iterate/" + name + "/library").c_str(), runIteration, name, false)->Unit(Unit);
    RegisterBenchmark(("iterate/" + name + "/literal").c_str(), runIterationLiterally, name)->Unit(Unit);
    RegisterBenchmark(("iterate/" + name + "/libcsv").c_str(), runLibcsv, name)->Unit(Unit);
  }
  for (const std::string name : {"wide", "narrow"}) {
    RegisterBenchmark(("iterate/" + name + "/sqlite").c_str(), runSqlite, name)->Unit(Unit)->Iterations(1);
    RegisterBenchmark(("iterate/" + name + "/cached").c_str(), runIteration, name, true)->Unit(Unit);
  }
  for (const std::string name :
       {"count-small", "count-middle", "count-large", "grow-columns-5", "grow-columns-50", "grow-columns-500"}) {
    RegisterBenchmark(("iterate/" + name + "/library").c_str(), runIteration, name, false)->Unit(Unit);
  }
  for (const std::string name : {"grow-tables-10", "grow-tables-1000", "grow-tables-100000"}) {
    RegisterBenchmark(("directory/" + name + "/library").c_str(), runDirectory, name)->Unit(Unit);
    RegisterBenchmark(("tables/" + name + "/library").c_str(), runTables, name)->Unit(benchmark::kMicrosecond);
  }
  for (const std::string name : {"cliff-crlf", "cliff-quotes", "cliff-empty", "cliff-tiny", "cliff-long",
                                 "cliff-separators", "cliff-space", "cliff-high"}) {
    RegisterBenchmark(("iterate/" + name + "/library").c_str(), runIteration, name, false)->Unit(Unit);
    RegisterBenchmark(("iterate/" + name + "/literal").c_str(), runIterationLiterally, name)->Unit(Unit);
  }
  RegisterBenchmark("count/narrow/library", runCount, std::string("narrow"))->Unit(Unit);
  RegisterBenchmark("count/narrow/literal", runCountLiterally, std::string("narrow"))->Unit(Unit);
  for (const std::string name : {"narrow", "keylast"}) {
    RegisterBenchmark(("search/" + name + "/library").c_str(), runSearch, name)->Unit(Unit);
    RegisterBenchmark(("search/" + name + "/literal").c_str(), runSearchLiterally, name)->Unit(Unit);
  }
}

}  // namespace bench
