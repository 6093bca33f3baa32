// The files that benchmarks read: generated from a seed, the same on every machine.
#pragma once

#include <string>
#include <vector>

namespace bench {

enum class Kind : int { Text, Integer, Float };

// A data file and how it is written.
struct Input {
  const char* name;
  bool isMultiTable;
  const char* separators;
  char decimal;
  std::vector<Kind> columns;  // what the columns hold; empty where nobody converts them
};

// Every input that there is.
const std::vector<Input>& getInputs();

// The input of that name; ends the program when there is none.
const Input& findInput(const std::string& name);

// Writes the file of an input. divisor makes it smaller: 1 for the full size.
void writeInput(const Input& input, const std::string& fileName, long divisor);

}  // namespace bench
