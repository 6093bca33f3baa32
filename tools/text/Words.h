// Small things about texts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace xeltools {

// The words of a text of options as a shell would see them: separated by blanks, tabs and ends of lines; quotes of both
// kinds and backslashes protect; a word that begins with # begins a comment that goes to the end of its line.
// Throws UserError, which says where the text came from, when a quote is not closed.
std::vector<std::string> splitOptions(std::string_view text, const std::string& origin);

// The parts of a text between separators; at least one.
std::vector<std::string> split(std::string_view text, char separator);

// The texts with joint between them.
std::string join(const std::vector<std::string>& texts, std::string_view joint);

// Whether a text begins or ends with another.
bool beginsWith(std::string_view text, std::string_view beginning);
bool endsWith(std::string_view text, std::string_view ending);

// The text with the ASCII letters in lower case, whatever the locale.
std::string toLower(std::string_view text);

// The text without blanks (code 32 only) at either end, as the library trims.
std::string_view trimBlanks(std::string_view text);

// How many characters have to be inserted, removed, replaced or exchanged with their neighbour to make one text the
// other; limit + 1 as soon as it is more than limit.
std::size_t getDistance(std::string_view left, std::string_view right, std::size_t limit);

// The text of candidates that is most like a mistyped one; empty when none is.
std::string findSimilar(std::string_view typed, const std::vector<std::string>& candidates);

// A number with its noun: "1 line", "2 lines".
std::string countOf(long number, const std::string& noun);

}  // namespace xeltools
