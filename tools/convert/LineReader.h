// Lines of a text file.
#pragma once

#include <fstream>
#include <string>

#include "tools/Errors.h"
#include "tools/text/Escape.h"

namespace xeltools {

class LineReader {
 public:
  // Throws UserError when the file cannot be opened.
  explicit LineReader(const std::string& file) : stream(file, std::ios::binary) {
    if (!stream) throw UserError(makePrintable(file) + ": cannot be opened");
  }

  bool read(std::string& line) { return static_cast<bool>(std::getline(stream, line)); }

  // Whether nothing follows.
  bool isAtEnd() { return stream.peek() == std::ifstream::traits_type::eof(); }

 private:
  std::ifstream stream;
};

}  // namespace xeltools
