// Bytes of a file in messages.
#pragma once

#include <string>
#include <string_view>

#include "csv/line/XelCsvText.h"

// The text in double quotes, as it may be shown anywhere: control characters, and what is no UTF-8, as \xNN, a
// byte-order mark as \uFEFF; of a long text only the beginning.
std::string XelQuoted(std::string_view text);
inline std::string XelQuoted(const XelCsvSpan& text) {
  return XelQuoted(std::string_view(text.begin, static_cast<std::size_t>(text.getLength())));
}

// The character in single quotes; as \xNN when it is a control character or none of ASCII.
std::string XelShown(char character);

// The byte as 0xNN.
std::string XelHex(char byte);

// "1 field", "2 fields".
std::string XelCounted(long count, const char* noun);
