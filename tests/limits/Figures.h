// What the tests of the limits measure: memory asked for, and time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/support/OpenTable.h"
#include "xelcsv/XelCsvReader.h"

// Counts what is asked of it. Cheap enough for millions of blocks: it trusts the sizes that come back.
class CountingAllocator : public XelAllocator {
 public:
  void* allocate(long size) override;
  void free(void* pointer, long size) override;

  // Bytes and blocks out.
  long getBytes() const { return bytes; }
  long getBlocks() const { return blocks; }

  // The most bytes that were out at one time since startPeak().
  long getPeak() const { return peak; }
  void startPeak() { peak = bytes; }

 private:
  long bytes = 0;
  long blocks = 0;
  long peak = 0;
};

// An environment over a CountingAllocator; fails the test when a byte is still out at its end.
class CountedEnv {
 public:
  CountedEnv() : env(&allocator) {}
  ~CountedEnv();
  CountedEnv(const CountedEnv&) = delete;
  CountedEnv& operator=(const CountedEnv&) = delete;

  operator XelEnv() const { return env; }

  long getBytes() const { return allocator.getBytes(); }

  // The most bytes that operation() had out beyond those that were out before.
  template <class Operation>
  long getPeakOf(Operation operation) {
    const long before = allocator.getBytes();
    allocator.startPeak();
    operation();
    return allocator.getPeak() - before;
  }

 private:
  CountingAllocator allocator;
  XelEnv env;
};

// Seconds that operation() takes.
template <class Operation>
double getSecondsOf(Operation operation) {
  const auto start = std::chrono::steady_clock::now();
  operation();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Prints a figure as "figure: what: value unit", and puts it into the result file under its name.
void report(const std::string& what, double value, const char* unit);

// A reader of a file by name; separators are commas.
inline XelCsvReader openFile(XelEnv env, const char* name, Kind kind, bool isMultiTable) {
  return XelCsvReader(env, name, isMultiTable ? 1 : 0, 0, ",", '.', '"', '#', kind == Kind::Cached ? 1 : 0);
}
