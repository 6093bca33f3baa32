// A line of a cached table by its key.
#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/goals/Goals.h"
#include "bench/support/Check.h"
#include "bench/support/Floors.h"
#include "bench/support/Passes.h"
#include "bench/support/Sqlite.h"

namespace bench {

namespace {

using benchmark::RegisterBenchmark;
using benchmark::State;

// A line that is looked up: its key values, and where it is.
struct Wanted {
  std::vector<std::string> values;
  long offset = 0;
  long lineNumber = 0;
};

// Some lines of a file, spread over all of it, in no order.
std::vector<Wanted> chooseLines(const File& file) {
  constexpr long Chosen = 20000;
  const literal::Settings settings = settingsOf(file);
  const literal::Zone zone = readHeadingZone(settings, nullptr);
  const long step = std::max(1L, file.facts.lines / Chosen);
  literal::Walk walk(settings, zone);
  std::vector<Wanted> chosen;
  for (long line = 0; walk.next(); ++line) {
    if (line % step != 0) continue;
    Wanted wanted;
    for (const long position : zone.keyPositions) {
      wanted.values.emplace_back(walk.getLine().fields[static_cast<std::size_t>(position)]);
    }
    wanted.offset = walk.getOffset();
    wanted.lineNumber = walk.getLine().lineNumber;
    chosen.push_back(wanted);
  }
  std::shuffle(chosen.begin(), chosen.end(),
               std::mt19937(7));  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
  return chosen;
}

const std::vector<Wanted>& linesOf(const std::string& name) {
  static std::string chosenName;
  static std::vector<Wanted> chosen;
  if (chosenName != name) {
    chosen = chooseLines(getFile(name));
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
    const XelCsvLine line = wanted.values.size() == 1
                                ? reader.getLineByKey(1, wanted.values[0].c_str())
                                : reader.getLineByKey(2, wanted.values[0].c_str(), wanted.values[1].c_str());
    if (line.getLineNumber() != wanted.lineNumber) ++wrong;
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
  for (const std::string name : {"narrow", "twokey", "shape-random", "shape-prefix", "shape-words"}) {
    RegisterBenchmark(("lookup/" + name + "/library").c_str(), runLibrary, name)->Unit(Unit)->Iterations(40000);
    RegisterBenchmark(("lookup/" + name + "/floor").c_str(), runFloor, name)->Unit(Unit)->Iterations(40000);
  }
  RegisterBenchmark("lookup/narrow/literal", runLiteral, std::string("narrow"))->Unit(Unit)->Iterations(20000);
  RegisterBenchmark("lookup/narrow/sqlite", runSqlite, std::string("narrow"))->Unit(Unit)->Iterations(20000);
}

}  // namespace bench
