// A slow and obvious reading of the syntax inside a line, one rule after the other. It shares no code with the library,
// which is compared with it.
#pragma once

#include <string>
#include <vector>

namespace fuzz {

// How lines are written.
struct Characters {
  std::string separators = ",";
  char decimal = '.';
  char quote = '"';
};

// The fields of a raw line: up to its first zero byte, line feed or carriage return.
std::vector<std::string> slowFields(const std::string& line, const Characters& characters);

// Fields as they stand in memory: each followed by a zero byte.
std::string slowText(const std::vector<std::string>& fields);

// Without the spaces at either end.
std::string slowTrim(std::string text);

// The raw first field: up to a separator or the line's end; quotes do not count.
std::string slowFirstField(const std::string& line, const Characters& characters);

// Whether only spaces and tabs stand before the line's end.
bool slowIsEmpty(const std::string& line);

}  // namespace fuzz
