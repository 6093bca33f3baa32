#include "tools/Environment.h"

#include <cstdlib>

namespace xeltools {

std::string getVariable(const char* name) {
  const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): there is one thread
  return value == nullptr ? std::string() : value;
}

}  // namespace xeltools
