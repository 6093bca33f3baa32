// Reads with memory of one's own: an allocator that counts, allows only so much, and knows whether all of it came back.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

class Budget : public XelAllocator {
 public:
  explicit Budget(long bytes) : left(bytes) {}

  void* allocate(long size) override {
    if (size > left) return nullptr;  // the library throws std::bad_alloc then
    void* block = std::malloc(static_cast<std::size_t>(size));
    if (block != nullptr) {
      left -= size;
      ++blocks;
    }
    return block;
  }

  void free(void* block, long size) override {
    std::free(block);
    left += size;
    --blocks;
  }

  long getBlocks() const { return blocks; }

 private:
  long left;
  long blocks = 0;
};

// Sums a column within a budget of memory.
void sumDistances(long bytes) {
  Budget budget(bytes);
  try {
    XelScoped<XelEnv> env(&budget);
    XelScoped<XelCsvReader> reader(env, "examples/data/transport.csv", 1);
    XelScoped routes(reader->getTableByName("routes"));
    double sum = 0;
    for (const XelCsvLine& route : XelLines(routes)) sum += route.getFloatByHeader("distance");
    std::printf("with %ld bytes: %.1f thousand miles in all\n", bytes, sum);
  } catch (const std::bad_alloc&) {
    std::printf("with %ld bytes: too little memory\n", bytes);
  }
  std::printf("blocks that did not come back: %ld\n", budget.getBlocks());
}

}  // namespace

int main() {
  try {
    sumDistances(8L << 20U);
    sumDistances(10000);
  } catch (const XelQuietException& problem) {
    std::fprintf(stderr, "%s\n", problem.getMessage());
    return 1;
  }
}
