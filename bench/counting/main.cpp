// One operation under callgrind, which counts its instructions and nothing before or behind it:
//   valgrind --tool=callgrind --collect-atstart=no xelcsv-bench-count FOLDER OPERATION FILE
// Prints the number of units that the operation went over: bytes of the file, or lines.
#include <valgrind/callgrind.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "bench/support/Floors.h"
#include "bench/support/Passes.h"
#include "bench/support/Wanted.h"

namespace bench {

namespace {

// Counts the instructions of work alone.
void count(const std::function<void()>& work) {
  CALLGRIND_TOGGLE_COLLECT;
  work();
  CALLGRIND_TOGGLE_COLLECT;
}

// An operation of a reader that is made before counting begins.
long countReading(const File& file, bool isCached, const std::function<void(XelCsvReader&)>& work) {
  XelEnv env;
  XelCsvReader reader = openReader(env, file, isCached);
  count([&work, &reader] { work(reader); });
  reader.end();
  env.end();
  return file.facts.bytes;
}

long countFloor(const File& file) {
  count([&file] { countLineFeeds(file.name); });
  return file.facts.bytes;
}

long countDirectory(const File& file) {
  XelEnv env;
  count([&file, &env] { makeDirectory(env, file); });
  env.end();
  return file.facts.bytes;
}

long countIndex(const File& file) {
  XelEnv env;
  count([&file, &env] { openReader(env, file, true).end(); });
  env.end();
  return file.facts.lines;
}

long countLookups(const File& file) {
  const std::vector<Wanted> lines = chooseLines(file, 1000);
  countReading(file, true, [&lines](XelCsvReader& reader) {
    for (const Wanted& wanted : lines) lookUp(reader, wanted);
  });
  return static_cast<long>(lines.size());
}

long countSearch(const File& file) {
  const std::string key = lastKeyOf(file);
  return countReading(file, false, [&key](XelCsvReader& reader) { reader.getLineByKey(1, key.c_str()); });
}

const std::map<std::string, std::function<long(const File&)>>& getOperations() {
  using Reader = XelCsvReader;
  static const std::map<std::string, std::function<long(const File&)>> Operations = {
      {"floor", countFloor},
      {"directory", countDirectory},
      {"directory-literal",
       [](const File& file) {
         count([&file] { makeDirectoryLiterally(file); });
         return file.facts.bytes;
       }},
      {"iterate",
       [](const File& file) { return countReading(file, false, [&file](Reader& reader) { iterate(reader, file); }); }},
      {"iterate-cached",
       [](const File& file) { return countReading(file, true, [&file](Reader& reader) { iterate(reader, file); }); }},
      {"iterate-literal",
       [](const File& file) {
         count([&file] { iterateLiterally(file); });
         return file.facts.bytes;
       }},
      {"getters",
       [](const File& file) {
         return countReading(file, false, [&file](Reader& reader) { callGetters(reader, file); });
       }},
      {"numbers",
       [](const File& file) {
         return countReading(file, false, [&file](Reader& reader) { addUpNumbers(reader, file); });
       }},
      {"items",
       [](const File& file) { return countReading(file, false, [](Reader& reader) { reader.getNumberOfItems(); }); }},
      {"search", countSearch},
      {"index", countIndex},
      {"lookup", countLookups},
  };
  return Operations;
}

}  // namespace

}  // namespace bench

int main(int count, char** arguments) {
  const auto& operations = bench::getOperations();
  if (count != 4 || operations.count(arguments[2]) == 0) {
    std::cerr << "usage: xelcsv-bench-count FOLDER OPERATION FILE\noperations:";
    for (const auto& operation : operations) std::cerr << ' ' << operation.first;
    std::cerr << '\n';
    return 2;
  }
  bench::setFolder(arguments[1]);
  std::cout << operations.at(arguments[2])(bench::getFile(arguments[3])) << '\n';
  return 0;
}
