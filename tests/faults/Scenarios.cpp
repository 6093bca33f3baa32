#include "tests/faults/Scenarios.h"

#include <array>
#include <cstdio>
#include <iterator>

std::string Scenario::getAnswer(const World& at) const {
  static const std::string hole = "{file}";
  std::string expected = at.isCached && !cachedAnswer.empty() ? cachedAnswer : answer;
  const std::size_t place = expected.find(hole);
  if (place != std::string::npos) expected.replace(place, hole.size(), at.file);
  return expected;
}

std::vector<Scenario> joined(std::vector<std::vector<Scenario>> parts) {
  std::vector<Scenario> all;
  for (std::vector<Scenario>& part : parts) {
    all.insert(all.end(), std::make_move_iterator(part.begin()), std::make_move_iterator(part.end()));
  }
  return all;
}

const std::vector<Scenario>& getScenarios() {
  static const std::vector<Scenario> scenarios = joined(
      {getEnvScenarios(), getReaderScenarios(), getTableScenarios(), getLineScenarios(), getIteratorScenarios()});
  return scenarios;
}

std::string runScenario(const Scenario& scenario, const World& at) {
  return outcomeOf([&] { return scenario.run(at); });
}

std::string text(double value) {
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%g", value);
  return digits.data();
}

std::string text(bool value) { return value ? "yes" : "no"; }

std::string text(const char* value) { return value == nullptr ? "(null)" : value; }

std::string text(const XelCsvTableReader& table) {
  if (table.isEmpty()) return "no table";
  return text(table.getNameOfTable()) + ":" + std::to_string(table.getNumberOfColumns());
}

std::string walkThrough(const XelCsvTableReader& table) {
  std::string all;
  for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) all += textOf(*it) + " ";
  return all;
}

std::string thrown(const std::string& className, const std::string& message) {
  return className + " | XelCsvReader::" + className + " : " + message;
}
