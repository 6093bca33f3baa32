// The composed key of a line: its key values joined with "-".
#pragma once

#include <cstdarg>

#include "csv/line/XelCsvText.h"
#include "env/XelEnvOwned.h"

// Joins values with "-", no "-" at either end. Grows as needed; used again for the next line without a new allocation.
class XelCsvKey {
 public:
  explicit XelCsvKey(XelEnv environment) noexcept : env(environment) {}

  // Begins a new key, which is empty until values come.
  void clear() noexcept { length = values = 0; }

  // Appends a value. Throws std::bad_alloc.
  void add(const XelCsvSpan& value);

  // The key so far.
  XelCsvSpan getText() const noexcept { return {text.get(), text.get() + length}; }

  // The key in an environment string of exactly its length + 1 bytes. Throws std::bad_alloc.
  XelEnvBlock<char> copy() const { return XelCopyString(env, text.get(), length); }

 private:
  void append(const char* from, long count);

  XelEnv env;
  XelEnvBlock<char> text;
  long length = 0;
  long values = 0;
};

// The key of numberOfKeys values that a caller gave: first, then the ones of the list, each a const char*. No block
// when one of the values is null, for no line has such a key. With 0 keys no value is looked at. Throws std::bad_alloc.
XelEnvBlock<char> XelComposeKey(XelEnv env, long numberOfKeys, const char* first, std::va_list others);
