#include "tools/text/Json.h"

#include <nlohmann/json.hpp>

#include "tools/text/Utf8.h"
#include "tools/text/Words.h"

namespace xeltools {

std::string toJson(std::string_view text) {
  const bool isPlain = isPlainAscii(text) && text.find_first_of("\"\\") == std::string_view::npos;
  if (isPlain) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    return quoted.append(1, '"').append(text).append(1, '"');
  }
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string toJson(const std::vector<std::string>& texts) {
  std::vector<std::string> items;
  for (const std::string& text : texts) items.push_back(toJson(text));
  return "[" + join(items, ", ") + "]";
}

}  // namespace xeltools
