// The index of a cached table: the time that building it takes, and its memory.
#include <csv.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "bench/goals/Goals.h"
#include "bench/support/Check.h"
#include "bench/support/CountingAllocator.h"
#include "bench/support/Passes.h"
#include "bench/support/Sqlite.h"

namespace bench {

namespace {

using benchmark::RegisterBenchmark;
using benchmark::State;

constexpr auto Unit = benchmark::kMillisecond;

void setLines(State& state, const File& file) {
  state.SetItemsProcessed(static_cast<long>(state.iterations()) * file.facts.lines);
  state.counters["lines"] = static_cast<double>(file.facts.lines);
}

void runIndex(State& state, const std::string& name) {
  const File& file = getFile(name);
  long lines = 0;
  for (auto _ : state) {
    XelEnv env;
    XelCsvReader reader = openReader(env, file, true);
    lines = reader.getNumberOfItems();
    state.PauseTiming();
    reader.end();
    env.end();
    state.ResumeTiming();
  }
  check(state, lines == file.facts.lines, "another number of lines");
  setLines(state, file);
}

// Bytes per line beyond the key's own length, of an environment whose memory is the user's.
void runMemory(State& state, const std::string& name) {
  const File& file = getFile(name);
  double keyLength = 0.0;
  {
    const literal::Settings settings = settingsOf(file);
    const literal::Zone zone = readHeadingZone(settings, nullptr);
    literal::Walk walk(settings, zone);
    long length = 0;
    while (walk.next()) length += static_cast<long>(composeKey(walk.getLine(), zone).size());
    keyLength = static_cast<double>(length) / static_cast<double>(file.facts.lines);
  }
  CountingAllocator allocator;
  XelEnv env(&allocator);
  for (auto _ : state) {
    XelCsvReader reader = openReader(env, file, true);
    const long bytes = allocator.getBytesInUse();
    const double perLine = static_cast<double>(bytes) / static_cast<double>(file.facts.lines);
    state.counters["perLine"] = perLine;
    state.counters["beyondKey"] = perLine - keyLength;
    state.counters["peakPerLine"] = static_cast<double>(allocator.getPeak()) / static_cast<double>(file.facts.lines);
    reader.end();
  }
  setLines(state, file);
  env.end();
}

void runIndexLiterally(State& state, const std::string& name) {
  const File& file = getFile(name);
  const literal::Settings settings = settingsOf(file);
  const literal::Zone zone = readHeadingZone(settings, nullptr);
  long lines = 0;
  for (auto _ : state) lines = literal::Index(settings, zone).getNumberOfItems();
  check(state, lines == file.facts.lines, "another number of lines");
  setLines(state, file);
}

// What who has libcsv would write: the offset of each line in a hash map of the standard library.
struct Peer {
  std::unordered_map<std::string, long> offsets;
  std::string key;
  long field = 0;
  long line = 0;
  long keyFields = 1;
};

void runPeer(State& state, const std::string& name, long keyFields) {
  const File& file = getFile(name);
  static std::vector<char> block(std::size_t{256} * 1024);
  std::size_t lines = 0;
  for (auto _ : state) {
    Peer peer;
    peer.keyFields = keyFields;
    const literal::Stream stream(file.name);
    csv_parser parser;
    if (csv_init(&parser, 0) != 0) return;
    const auto atField = [](void* text, std::size_t length, void* data) {
      Peer& to = *static_cast<Peer*>(data);
      if (to.field < to.keyFields) {
        if (to.field > 0) to.key += '-';
        to.key.append(static_cast<const char*>(text), length);
      }
      ++to.field;
    };
    const auto atLine = [](int, void* data) {
      Peer& to = *static_cast<Peer*>(data);
      to.offsets.emplace(to.key, to.line++);
      to.key.clear();
      to.field = 0;
    };
    for (;;) {
      const std::size_t length = std::fread(block.data(), 1, block.size(), stream.get());
      if (length == 0) break;
      if (csv_parse(&parser, block.data(), length, atField, atLine, &peer) != length) break;
    }
    csv_free(&parser);
    lines = peer.offsets.size();
    state.PauseTiming();
    peer.offsets.clear();
    state.ResumeTiming();
  }
  // The lines of the heading zone are lines to the peer.
  check(state, lines >= static_cast<std::size_t>(file.facts.lines), "another number of lines");
  setLines(state, file);
}

// A table in memory with a primary key, filled from the file.
void runSqlite(State& state, const std::string& name) {
  const File& file = getFile(name);
  long rows = 0;
  for (auto _ : state) {
    Sqlite database(file);
    fillTable(database);
    state.PauseTiming();
    rows = database.ask("select count(*) from lines");
    state.ResumeTiming();
  }
  check(state, rows >= file.facts.lines, "lines are missing");
  setLines(state, file);
}

}  // namespace

void registerIndexes() {
  for (const std::string name :
       {"narrow", "twokey", "shape-count", "shape-pair", "shape-random", "shape-prefix", "shape-suffix", "shape-words",
        "count-small", "count-middle", "count-large", "grow-key-8", "grow-key-32", "grow-key-128"}) {
    RegisterBenchmark(("index/" + name + "/library").c_str(), runIndex, name)->Unit(Unit);
  }
  RegisterBenchmark("index/narrow/literal", runIndexLiterally, std::string("narrow"))->Unit(Unit)->Iterations(1);
  RegisterBenchmark("index/twokey/literal", runIndexLiterally, std::string("twokey"))->Unit(Unit)->Iterations(1);
  RegisterBenchmark("index/narrow/libcsv", runPeer, std::string("narrow"), 1)->Unit(Unit)->Iterations(1);
  RegisterBenchmark("index/twokey/libcsv", runPeer, std::string("twokey"), 2)->Unit(Unit)->Iterations(1);
  RegisterBenchmark("index/narrow/sqlite", runSqlite, std::string("narrow"))->Unit(Unit)->Iterations(1);
  RegisterBenchmark("memory/narrow/library", runMemory, std::string("narrow"))->Unit(Unit)->Iterations(1);
  RegisterBenchmark("memory/twokey/library", runMemory, std::string("twokey"))->Unit(Unit)->Iterations(1);
}

}  // namespace bench
