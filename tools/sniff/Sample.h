// The lines that a guess is made of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace xeltools {

// The beginning of a file as lines, without their ends, empty ones left out.
struct Sample {
  Sample(std::string_view text, bool isWhole);

  std::vector<std::string_view> lines;
  bool hasByteOrderMark = false;
  bool isUtf16 = false;
  bool hasNul = false;
  bool endsWithReturns = false;  // most lines end with a carriage return and a line feed
};

// The fields of a line, as the library splits it: separators within quotes are text, and a blank that is the separator and
// follows a separator vanishes. Quotes stay.
std::vector<std::string_view> splitLine(std::string_view line, char separator, char quote);

// A first field in front of its bar: "plants" of "plants|NAMES".
std::string_view cutAtBar(std::string_view field);

}  // namespace xeltools
