// Reads one file in two threads at a time, by an index and by scanning. Each thread has an environment and a reader of its
// own, and they share nothing.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <exception>
#include <future>

namespace {

struct Answer {
  long routes;
  double longest;
};

Answer readRoutes(const char* file, bool isCached) {
  XelScoped<XelEnv> env;
  XelScoped<XelCsvReader> reader(env, file, 1, 0, ",", '.', '"', '#', isCached ? 1 : 0);
  XelScoped routes(reader->getTableByName("routes"));
  Answer answer{routes->getNumberOfItems(), 0};
  for (const XelCsvLine& route : XelLines(routes)) {
    const double distance = route.getFloatByHeader("distance");
    if (distance > answer.longest) answer.longest = distance;
  }
  return answer;
}

}  // namespace

int main() {
  const char* file = "examples/data/transport.csv";
  try {
    std::future<Answer> scanning = std::async(std::launch::async, readRoutes, file, false);
    const Answer indexed = readRoutes(file, true);
    const Answer scanned = scanning.get();  // brings the exception of the other thread, if it has one
    std::printf("with an index:    %ld routes, the longest %.1f\n", indexed.routes, indexed.longest);
    std::printf("without an index: %ld routes, the longest %.1f\n", scanned.routes, scanned.longest);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    return 1;
  }
}
