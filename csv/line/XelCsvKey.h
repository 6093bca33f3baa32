// The composed key of a line: its key values joined with "-".
#pragma once

#include <cstdarg>
#include <cstring>

#include "csv/line/XelCsvText.h"
#include "env/XelEnvOwned.h"

// Joins values with "-", no "-" at either end. Grows as needed; used again for the next line without a new allocation.
class XelCsvKey {
 public:
  explicit XelCsvKey(XelEnv environment) noexcept : env(environment) {}

  // Begins a new key, which is empty until values come.
  void clear() noexcept { length = values = 0; }

  // Appends a value. Throws std::bad_alloc, the key is as before then.
  void add(const XelCsvSpan& value) {
    const long count = value.getLength();
    const long joint = values > 0 ? 1 : 0;
    if (length + joint + count > text.getCount()) grow(joint + count);
    if (joint > 0) text[length] = '-';
    if (count > 0) std::memcpy(text.get() + length + joint, value.begin, static_cast<std::size_t>(count));
    length += joint + count;
    ++values;
  }

  // The key so far.
  XelCsvSpan getText() const noexcept { return {text.get(), text.get() + length}; }

 private:
  // Makes room for count bytes more.
  void grow(long count);

  XelEnv env;
  XelEnvBlock<char> text;
  long length = 0;
  long values = 0;
};

// The key of numberOfKeys values that a caller gave: first, then the ones of the list, each a const char*; in a block of
// exactly its length + 1 bytes. No block when one of the values is null, for no line has such a key. With 0 keys no value
// is looked at. Throws std::bad_alloc.
XelEnvBlock<char> XelComposeKey(XelEnv env, long numberOfKeys, const char* first, std::va_list others);
