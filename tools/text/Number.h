// Numbers as texts of files hold them.
#pragma once

#include <string>
#include <string_view>

namespace xeltools {

// Whether the whole text is a decimal number, or an infinity as the library writes them: "12", "-0.5", "+3e4", "+INF".
bool isNumber(std::string_view text);

// Whether it is a number of JSON: no plus, no leading zeros, digits around the point.
bool isJsonNumber(std::string_view text);

// Whether it is an integer that 64 bits hold and that would be written in the same way: no plus, no leading zeros.
bool isPlainInteger(std::string_view text);

// Whether it is a number of JSON that a double keeps digit by digit: at most 15 significant ones, a moderate exponent.
bool isPlainReal(std::string_view text);

// Bytes for people: "532 bytes", "1.4 MB".
std::string formatBytes(long bytes);

}  // namespace xeltools
