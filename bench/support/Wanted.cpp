#include "bench/support/Wanted.h"

#include <algorithm>
#include <random>

namespace bench {

std::vector<Wanted> chooseLines(const File& file, long number) {
  const literal::Settings settings = settingsOf(file);
  const literal::Zone zone = readHeadingZone(settings, nullptr);
  const long step = std::max(1L, file.facts.lines / number);
  literal::Walk walk(settings, zone);
  std::vector<Wanted> chosen;
  for (long line = 0; walk.next(); ++line) {
    if (line % step != 0) continue;
    Wanted wanted;
    for (const long position : zone.keyPositions) {
      wanted.values.emplace_back(walk.getLine().fields[static_cast<std::size_t>(position)]);
    }
    wanted.offset = walk.getOffset();
    wanted.lineNumber = walk.getLine().lineNumber;
    chosen.push_back(wanted);
  }
  std::shuffle(chosen.begin(), chosen.end(),
               std::mt19937(7));  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
  return chosen;
}

std::string lastKeyOf(const File& file) {
  std::string digits = std::to_string(file.facts.lines - 1);
  return "K" + std::string(7 - digits.size(), '0') + digits;
}

XelCsvLine lookUp(XelCsvReader& reader, const Wanted& wanted) {
  if (wanted.values.size() == 1) return reader.getLineByKey(1, wanted.values[0].c_str());
  return reader.getLineByKey(2, wanted.values[0].c_str(), wanted.values[1].c_str());
}

}  // namespace bench
