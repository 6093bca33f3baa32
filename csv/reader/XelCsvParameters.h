// Tests of what a user gives to the constructor of a reader.
#pragma once

#include "xelcsv/XelEnv.h"

namespace XelCsvParameters {

// Tests the file, then the characters; the first failure throws.
void makeTests(XelEnv env, const char* fileName, const char* separators, char decimal, char quote, char comment);

// The file can be opened. Throws XelFileNotFoundException, and XelCsvReaderException for a pipe, which no open may wait
// for.
void testFile(XelEnv env, const char* fileName);

// The characters are there and do not clash. Throws XelCsvReaderParameterException.
void testParameters(XelEnv env, const char* separators, char decimal, char quote, char comment);

// A character, called what in the message, is none of the separators.
void inclusionTest(XelEnv env, char character, const char* separators, const char* what);

// Two characters differ.
void testCharacter(XelEnv env, char character1, const char* what1, char character2, const char* what2);

}  // namespace XelCsvParameters
