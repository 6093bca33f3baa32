// Variables of the environment.
#pragma once

#include <string>

namespace xeltools {

// The value of a variable, empty when it is not set.
std::string getVariable(const char* name);

}  // namespace xeltools
