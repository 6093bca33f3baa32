#include "tools/text/Json.h"

#include <nlohmann/json.hpp>

#include "tools/text/Escape.h"
#include "tools/text/Utf8.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

// Writes out what JSON allows and a terminal would obey; all such characters are below U+10000.
std::string escapeRest(const std::string& json) {
  std::string escaped;
  for (std::size_t position = 0; position < json.size();) {
    const Character character = readCharacter(json, position);
    if (isUnfitForTerminal(character.code)) {
      escaped += "\\u";
      for (const unsigned shift : {12U, 8U, 4U, 0U}) escaped += "0123456789abcdef"[(character.code >> shift) & 15U];
    } else {
      escaped += json.substr(position, character.bytes);
    }
    position += character.bytes;
  }
  return escaped;
}

}  // namespace

std::string toJson(std::string_view text) {
  const bool isPlain = isPlainAscii(text) && text.find_first_of("\"\\") == std::string_view::npos;
  if (isPlain) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    return quoted.append(1, '"').append(text).append(1, '"');
  }
  return escapeRest(nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

std::string toMember(std::string_view name, const std::string& value) { return toJson(name) + ": " + value; }

std::string toObject(const std::vector<std::string>& members) { return "{" + join(members, ", ") + "}"; }

std::string toJson(const std::vector<std::string>& texts) {
  std::vector<std::string> items;
  items.reserve(texts.size());
  for (const std::string& text : texts) items.push_back(toJson(text));
  return "[" + join(items, ", ") + "]";
}

}  // namespace xeltools
