#include "csv/reader/XelCsvParameters.h"

#include <cstring>

#if __has_include(<sys/stat.h>)
#include <sys/stat.h>
#endif

#include "csv/errors/XelCsvErrors.h"
#include "csv/errors/XelCsvOpen.h"

namespace {

// Whether a file is a pipe, which an open would wait for. Asked of the system and not of std::filesystem, whose paths
// take memory that is not the environment's.
bool isPipe(const char* fileName) {
#ifdef S_ISFIFO
  struct stat status {};
  return stat(fileName, &status) == 0 && S_ISFIFO(status.st_mode);
#else
  static_cast<void>(fileName);
  return false;
#endif
}

}  // namespace

namespace XelCsvParameters {

void makeTests(XelEnv env, const char* fileName, const char* separators, char decimal, char quote, char comment) {
  testFile(env, fileName);
  testParameters(env, separators, decimal, quote, comment);
}

void testFile(XelEnv /*env*/, const char* fileName) {
  if (fileName == nullptr) XelCsvErrors::emptyFileName();
  if (isPipe(fileName)) XelCsvErrors::corruptedTable({fileName, nullptr});
  XelCsvFile file;
  const int error = file.open(fileName, "rb");
  if (error != 0) XelThrowOpenError(error, fileName);
}

void testParameters(XelEnv env, const char* separators, char decimal, char quote, char comment) {
  if (separators == nullptr || decimal == '\0' || quote == '\0' || comment == '\0') {
    XelCsvErrors::noSeparatorOrCharacter();
  }
  inclusionTest(env, quote, separators, "Quote");
  inclusionTest(env, decimal, separators, "Decimal");
  inclusionTest(env, comment, separators, "Comment");
  testCharacter(env, comment, "Comment", quote, "Quote");
  testCharacter(env, comment, "Comment", decimal, "Decimal");
  testCharacter(env, decimal, "Decimal", quote, "Quote");
}

void inclusionTest(XelEnv /*env*/, char character, const char* separators, const char* what) {
  if (std::strchr(separators, character) != nullptr) {
    XelCsvErrors::separatorIncludes(separators, what, character);
  }
}

void testCharacter(XelEnv /*env*/, char character1, const char* what1, char character2, const char* what2) {
  if (character1 == character2) XelCsvErrors::sameCharacter(what1, character1, what2, character2);
}

}  // namespace XelCsvParameters
