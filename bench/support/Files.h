// The generated files as benchmarks see them.
#pragma once

#include <string>

#include "bench/inputs/Inputs.h"
#include "bench/literal/Literal.h"

namespace bench {

// What every way of reading a file must find in it.
struct Facts {
  long bytes = 0;
  long lineEnds = 0;
  long lines = 0;   // data lines
  long fields = 0;  // of data lines
  long sum = 0;     // of the first byte of the last field of each data line
};

// A generated file.
struct File {
  const Input* input = nullptr;
  std::string name;  // with its folder
  Facts facts;
};

// The folder of the generated files; set once, before any file is asked for.
void setFolder(const std::string& folder);

// The generated file of that name; ends the program when there is none.
const File& getFile(const std::string& name);

// The settings under which the literal reader reads a file.
literal::Settings settingsOf(const File& file);

// Generates what is missing in the folder, and forgets nothing that is there. divisor as in writeInput.
void generateFiles(const std::string& folder, long divisor);

}  // namespace bench
