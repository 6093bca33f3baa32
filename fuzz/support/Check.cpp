#include "fuzz/support/Check.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {

void fail(const std::string& what) {
  std::fprintf(stderr, "fuzz: %s\n", what.c_str());
  std::abort();
}

std::string quoted(const std::string& text) {
  constexpr const char* Digits = "0123456789abcdef";
  std::string result = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte > '~') {
      result += {'\\', 'x', Digits[byte / 16], Digits[byte % 16]};
    } else {
      if (c == '"' || c == '\\') result += '\\';
      result += c;
    }
  }
  return result + "\"";
}

}  // namespace fuzz
