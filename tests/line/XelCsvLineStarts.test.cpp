#include "csv/line/XelCsvLineStarts.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/support/VectorLevels.h"

namespace {

// Where lines begin, and where the last whole one ends.
std::vector<long> findSlowly(const std::string& bytes) {
  std::vector<long> starts{0};
  for (std::size_t at = bytes.find('\n'); at != std::string::npos; at = bytes.find('\n', at + 1)) {
    starts.push_back(static_cast<long>(at) + 1);
  }
  return starts;
}

std::vector<long> findAtLevel(const std::string& bytes, XelVectorLevel level) {
  const AtVectorLevel taken(level);
  std::vector<std::uint16_t> starts(XelMostLineStarts, 0xffff);
  // Exactly these bytes: a look beyond them is seen by the tools that watch memory.
  const std::vector<char> exact(bytes.begin(), bytes.end());
  const long count = XelFindLineStarts(exact.data(), static_cast<long>(exact.size()), starts.data());
  return {starts.begin(), starts.begin() + count + 1};
}

void expectAllAlike(const std::string& bytes) {
  const std::vector<long> expected = findSlowly(bytes);
  ASSERT_EQ(findAtLevel(bytes, XelVectorLevel::Plain), expected) << bytes.size() << " bytes";
  for (const XelVectorLevel level : getVectorLevels()) {
    ASSERT_EQ(findAtLevel(bytes, level), expected) << bytes.size() << " bytes, level " << static_cast<int>(level);
  }
}

}  // namespace

TEST(LineStarts, AreFoundAtEveryPlaceOfAWindowByEachLevel) {
  for (std::size_t length = 0; length <= 200; ++length) {
    expectAllAlike(std::string(length, 'x'));
    expectAllAlike(std::string(length, '\n'));
    for (std::size_t at = 0; at < length; ++at) {
      std::string bytes(length, 'x');
      bytes[at] = '\n';
      expectAllAlike(bytes);
    }
  }
}

TEST(LineStarts, AreFoundAmongRandomBytesByEachLevel) {
  std::mt19937 random(64);
  for (int round = 0; round < 3000; ++round) {
    std::string bytes(random() % 400, '\0');
    const auto rarity = 1 + random() % 40;
    for (char& byte : bytes) byte = random() % rarity == 0 ? '\n' : static_cast<char>(random() % 256);
    expectAllAlike(bytes);
  }
}

TEST(LineStarts, AreAsManyAsAStretchHasBytes) {
  const std::size_t size = XelStretchSize;
  expectAllAlike(std::string(size, '\n'));
  expectAllAlike(std::string(size, 'x'));
  expectAllAlike(std::string(size - 1, 'x') + "\n");
  expectAllAlike("\n" + std::string(size - 1, 'x'));
}
