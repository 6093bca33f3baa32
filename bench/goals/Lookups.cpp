// A line of a cached table by its key.
#include <memory>
#include <string>
#include <vector>

#include "bench/goals/Goals.h"
#include "bench/support/Check.h"
#include "bench/support/Floors.h"
#include "bench/support/Passes.h"
#include "bench/support/Sqlite.h"
#include "bench/support/Wanted.h"

namespace bench {

namespace {

using benchmark::RegisterBenchmark;
using benchmark::State;

const std::vector<Wanted>& linesOf(const std::string& name) {
  static std::string chosenName;
  static std::vector<Wanted> chosen;
  if (chosenName != name) {
    chosen = chooseLines(getFile(name), 20000);
    chosenName = name;
  }
  return chosen;
}

// One after the other, and again from the first.
class Turn {
 public:
  explicit Turn(const std::vector<Wanted>& wanted) : lines(wanted) {}
  const Wanted& next() {
    if (at == lines.size()) at = 0;
    return lines[at++];
  }

 private:
  const std::vector<Wanted>& lines;
  std::size_t at = 0;
};

void runFloor(State& state, const std::string& name) {
  const File& file = getFile(name);
  Turn turn(linesOf(name));
  for (auto _ : state) {
    if (readAt(file.name, turn.next().offset) <= 0) state.SkipWithError("nothing is read");
  }
}

void runLibrary(State& state, const std::string& name) {
  const File& file = getFile(name);
  Turn turn(linesOf(name));
  XelEnv env;
  XelCsvReader reader = openReader(env, file, true);
  long wrong = 0;
  for (auto _ : state) {
    const Wanted& wanted = turn.next();
    if (lookUp(reader, wanted).getLineNumber() != wanted.lineNumber) ++wrong;
  }
  check(state, wrong == 0, "another line");
  reader.end();
  env.end();
}

void runLiteral(State& state, const std::string& name) {
  const File& file = getFile(name);
  const std::vector<Wanted>& lines = linesOf(name);
  const literal::Settings settings = settingsOf(file);
  const literal::Zone zone = readHeadingZone(settings, nullptr);
  const literal::Index index(settings, zone);
  const auto line = std::make_unique<literal::Line>();
  Turn turn(lines);
  long wrong = 0;
  for (auto _ : state) {
    const Wanted& wanted = turn.next();
    const std::string key = wanted.values.size() == 1 ? wanted.values[0] : wanted.values[0] + "-" + wanted.values[1];
    if (!index.read(key, *line) || line->lineNumber != wanted.lineNumber) ++wrong;
  }
  check(state, wrong == 0, "another line");
}

void runSqlite(State& state, const std::string& name) {
  const File& file = getFile(name);
  Turn turn(linesOf(name));
  Sqlite database(file);
  fillTable(database);
  database.prepare("select * from lines where key = ?");
  long found = 0;
  for (auto _ : state) {
    if (database.lookUp(turn.next().values[0]) > 0) ++found;
  }
  check(state, found == static_cast<long>(state.iterations()), "lines are missing");
}

}  // namespace

void registerLookups() {
  constexpr auto Unit = benchmark::kMicrosecond;
  for (const std::string name : {"narrow", "twokey", "shape-random", "shape-prefix", "shape-words", "count-small",
                                 "count-middle", "count-large", "grow-key-8", "grow-key-32", "grow-key-128"}) {
    RegisterBenchmark(("lookup/" + name + "/library").c_str(), runLibrary, name)->Unit(Unit)->Iterations(40000);
    RegisterBenchmark(("lookup/" + name + "/floor").c_str(), runFloor, name)->Unit(Unit)->Iterations(40000);
  }
  RegisterBenchmark("lookup/narrow/literal", runLiteral, std::string("narrow"))->Unit(Unit)->Iterations(20000);
  RegisterBenchmark("lookup/narrow/sqlite", runSqlite, std::string("narrow"))->Unit(Unit)->Iterations(20000);
}

}  // namespace bench
