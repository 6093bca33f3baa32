// What must hold of every data file, said without a model of the library.
#pragma once

#include "fuzz/support/Parameters.h"
#include "fuzz/support/SlowFile.h"

namespace fuzz {

// Reads the file's first tables with readers of both kinds. Every line that iteration gives stands in the file at its number
// with just these fields, and is found again by its number and, where keys are unique, by its key; the index knows where it
// begins; both kinds of tables have the same lines.
void checkProperties(const std::string& fileName, const Parameters& parameters, const SlowFile& file);

}  // namespace fuzz
