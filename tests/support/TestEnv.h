// An environment that watches the memory of a test.
#pragma once

#include <gtest/gtest.h>

#include <new>
#include <unordered_map>

#include "tests/support/DataFile.h"
#include "xelcsv/XelEnv.h"

// Failures that the tests of this program have injected so far. At the end of the program they are printed, and stand in
// its XML result as attributes of the root: injectedAllocationFailures and injectedFileFailures.
struct InjectedFailures {
  long allocations = 0;
  long fileCalls = 0;
};
InjectedFailures& getInjectedFailures();

// Supplies memory, checks every size given back, can be told to fail, and fills blocks with a pattern so that nothing
// unwritten looks like data.
class TestAllocator : public XelAllocator {
 public:
  ~TestAllocator() override;
  void* allocate(long size) override;
  void free(void* pointer, long size) override;

  // The allocation number countdown from now (0: the next one) fails; with always set, all after it fail too.
  void failAfter(long countdown, bool always = false);
  void neverFail() { countdown = -1; }

  long getBlocksOut() const { return static_cast<long>(sizes.size()); }
  long getAllocations() const { return allocations; }

  // Allocations that were made to fail.
  long getFailures() const { return failures; }

  // Bytes of the blocks out.
  long getBytesOut() const { return bytes; }

 private:
  std::unordered_map<void*, long> sizes;
  long countdown = -1;
  bool failAlways = false;
  long allocations = 0;
  long failures = 0;
  long bytes = 0;
};

// An environment over a TestAllocator: at its end it fails the test when a block is still out, when a block came back with
// another size, or when a file stayed open. Converts to XelEnv.
class TestEnv {
 public:
  TestEnv();
  ~TestEnv();
  TestEnv(const TestEnv&) = delete;
  TestEnv& operator=(const TestEnv&) = delete;

  operator XelEnv() const { return env; }
  XelEnv get() const { return env; }
  TestAllocator& getAllocator() { return allocator; }

 private:
  long openFiles;
  TestAllocator allocator;
  XelEnv env;
};

// Runs scenario(XelEnv) again and again while the first, the second, ... allocation fails (once, then with all that follow)
// until it passes, and checks after each run that std::bad_alloc came through, that every block came back and that no file
// stayed open. The scenario releases by itself what it took, also on its way out of an exception (see EndGuard). Answers
// the number of failures injected.
template <class Scenario>
long forEachFailingAllocation(Scenario scenario) {
  long injected = 0;
  for (const bool always : {false, true}) {
    for (long k = 0;; ++k) {
      TestEnv env;
      env.getAllocator().failAfter(k, always);
      bool failed = false;
      try {
        scenario(env.get());
      } catch (const std::bad_alloc&) {
        failed = true;
      }
      const bool hasInjected = env.getAllocator().getFailures() > 0;
      env.getAllocator().neverFail();
      if (!hasInjected) {
        EXPECT_FALSE(failed) << "std::bad_alloc without a failing allocation";
        break;
      }
      ++injected;
      EXPECT_TRUE(failed) << "allocation " << k << " failed and nobody was told";
    }
  }
  return injected;
}

// Calls end() of a handle at the end of the scope.
template <class Handle>
class EndGuard {
 public:
  explicit EndGuard(Handle& handleToEnd) : handle(handleToEnd) {}
  ~EndGuard() { handle.end(); }
  EndGuard(const EndGuard&) = delete;
  EndGuard& operator=(const EndGuard&) = delete;

 private:
  Handle& handle;
};
