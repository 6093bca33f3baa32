#include "csv/line/XelCsvFieldStart.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/support/VectorLevels.h"

namespace {

constexpr long NotFound = -1;

struct Settings {
  const char* separators;
  char decimal;
  char quote;
};

// One separator, a few and many, with and without those that no vector is compared with.
const Settings AllSettings[] = {{",", '.', '"'},         {";", ',', '"'},           {",;\t", '.', '\''},
                                {",;:|/+*\t", '.', '"'}, {",", '\n', '\r'},         {",;:|/+*\t-", '.', '"'},
                                {", ", '.', '"'},        {"\xFF\x80", 'e', '\xFE'}, {"", '.', '"'}};

// Index of the field's first byte.
long findSlowly(const std::string& line, const Settings& settings, long position) {
  const std::string separators = settings.separators;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char byte = line[at];
    const bool isEnd = byte == '\0' || byte == '\n' || byte == '\r';
    const bool isSeparator = separators.find(byte) != std::string::npos;
    if (isEnd || (isSeparator && byte == ' ') || (!isSeparator && byte == settings.quote)) return NotFound;
    if (isSeparator && --position == 0) return static_cast<long>(at) + 1;
  }
  return NotFound;
}

long findAtLevel(const std::string& line, const Settings& settings, long position, XelVectorLevel level) {
  const AtVectorLevel taken(level);
  const XelCsvFormat format(settings.separators, settings.decimal, settings.quote);
  // Exactly the bytes that may be looked at, those behind the line full of separators.
  std::vector<char> bytes(line.begin(), line.end());
  const char filling = *settings.separators == '\0' ? 'x' : *settings.separators;
  bytes.resize(line.size() + XelFieldStartReach, filling);
  const char* const found = XelGetFieldFinder(format)(bytes.data(), format, position);
  return found == nullptr ? NotFound : found - bytes.data();
}

void expectAllAlike(const std::string& line, const Settings& settings, long position) {
  const long expected = findSlowly(line, settings, position);
  std::vector<XelVectorLevel> levels = getVectorLevels();
  levels.push_back(XelVectorLevel::Plain);
  for (const XelVectorLevel level : levels) {
    ASSERT_EQ(findAtLevel(line, settings, position, level), expected)
        << testing::PrintToString(line) << ", position " << position << ", separators " << settings.separators
        << ", level " << static_cast<int>(level);
  }
}

}  // namespace

TEST(FieldStart, IsFoundAtEveryPlaceOfAWindowByEachLevel) {
  for (const char* stop : {"", "\"", "\r"}) {
    for (std::size_t before = 0; before < 200; ++before) {
      for (const std::size_t behind : {0U, 1U, 62U, 63U, 64U}) {
        const std::string line = std::string(before, 'x') + "," + std::string(behind, 'y') + stop + ",z\n";
        expectAllAlike(line, AllSettings[0], 1);
        expectAllAlike(line, AllSettings[0], 2);
        expectAllAlike(line, AllSettings[0], 3);
      }
    }
  }
}

TEST(FieldStart, IsFoundAmongRandomBytesByEachLevel) {
  std::mt19937 random(7);
  for (const Settings& settings : AllSettings) {
    const std::string special = settings.separators + std::string("\r\" '") + std::string(1, '\0');
    for (int round = 0; round < 1500; ++round) {
      std::string line(random() % 300, '\0');
      const auto rarity = 1 + random() % 20;
      const std::size_t kinds = random() % 3 == 0 ? special.size() : special.size() - 5;
      for (char& byte : line) {
        do {
          byte = kinds > 0 && random() % rarity == 0 ? special[random() % kinds] : static_cast<char>(random() % 256);
        } while (byte == '\n');
      }
      expectAllAlike(line + "\n", settings, 1 + static_cast<long>(random() % 9));
    }
  }
}

TEST(FieldStart, IsFoundInTheLastOfManyFields) {
  std::string line;
  for (int field = 0; field < 4999; ++field) line += "1,";
  for (const long position : {1L, 2L, 4998L, 4999L, 5000L}) expectAllAlike(line + "\n", AllSettings[0], position);
}
