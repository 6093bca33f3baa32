// Texts and numbers of JSON.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace xeltools {

// The text as a string of JSON, quotes included. Bytes that are no UTF-8 become U+FFFD.
std::string toJson(std::string_view text);

// A member of an object: the name as a string, and a value that is JSON already.
std::string toMember(std::string_view name, const std::string& value);

// An object of such members on one line.
std::string toObject(const std::vector<std::string>& members);

// The texts as an array of strings.
std::string toJson(const std::vector<std::string>& texts);

}  // namespace xeltools
