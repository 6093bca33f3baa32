// How the data file of an input is written, from the first words of the input: "ms ,; .\"#" is a file of several tables
// (m) with table splitting (s), the separators "," and ";", the decimal character ".", the quote and the comment character.
#pragma once

#include <string>

#include "fuzz/support/Input.h"
#include "fuzz/support/SlowLine.h"
#include "tests/support/TableModel.h"
#include "xelcsv/XelCsvReader.h"

namespace fuzz {

// Number of words that parameters take.
constexpr std::size_t ParameterWords = 3;

struct Parameters {
  bool isMultiTable = false;
  bool isSplit = false;
  Characters characters;
  char comment = '#';
};

Parameters parseParameters(const Input& input);

// What the constructor of a reader says to these parameters: nothing when it takes them, else it throws a model::Failure.
void slowCheck(const Parameters& parameters);

// The same parameters as the model of tables takes them.
model::Settings settingsOf(const Parameters& parameters);

XelCsvReader openReader(XelEnv env, const std::string& fileName, const Parameters& parameters, bool isCached);

}  // namespace fuzz
