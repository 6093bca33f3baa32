// Properties that an input must keep: one that fails says what was got and what was expected, and aborts, which is what
// makes a fuzzer keep the input.
#pragma once

#include <sstream>
#include <string>

namespace fuzz {

// Prints the text and aborts.
[[noreturn]] void fail(const std::string& what);

// The text between double quotes, every byte readable.
std::string quoted(const std::string& text);

inline void check(bool holds, const std::string& what) {
  if (!holds) fail(what);
}

inline std::string shown(const std::string& text) { return quoted(text); }

template <class Value>
std::string shown(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

// What was got is what was expected.
template <class Value>
void checkEqual(const Value& got, const Value& expected, const std::string& what) {
  if (got == expected) return;
  fail(what + "\n  got      " + shown(got) + "\n  expected " + shown(expected));
}

}  // namespace fuzz
