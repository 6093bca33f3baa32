// The library against the literal reader of the benchmarks: on small editions of the files that they measure with, under
// every level of vectors, both find the same tables, lines, fields and keys.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "bench/inputs/Inputs.h"
#include "bench/literal/Literal.h"
#include "csv/line/XelCsvVectors.h"
#include "tests/support/DataFile.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvReader.h"

namespace {

// The full files have millions of lines.
constexpr long Divisor = 2000;

// A line as text: its number and its fields.
std::string describe(long lineNumber, char* const* fields, long numberOfFields) {
  std::string text = std::to_string(lineNumber);
  for (long field = 0; field < numberOfFields; ++field) text += std::string("<") + fields[field] + ">";
  return text;
}

using Lines = std::vector<std::string>;

Lines readLiterally(const literal::Settings& settings, const literal::Zone& zone) {
  Lines lines;
  const auto walk = std::make_unique<literal::Walk>(settings, zone);
  while (walk->next()) {
    const literal::Line& line = walk->getLine();
    lines.push_back(describe(line.lineNumber, line.fields.data(), line.numberOfFields));
  }
  return lines;
}

Lines read(XelCsvTableReader table) {
  Lines lines;
  for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) {
    lines.push_back(describe((*it).getLineNumber(), (*it).getFields(), (*it).getNumberOfFields()));
  }
  return lines;
}

// Whether the lines can be looked up here: one or two key columns, and no key that comes again.
bool hasKeys(const literal::Settings& settings, const literal::Zone& zone) {
  if (zone.keyPositions.size() > 2) return false;
  std::set<std::string> known;
  const auto walk = std::make_unique<literal::Walk>(settings, zone);
  while (walk->next()) {
    if (!known.insert(literal::composeKey(walk->getLine(), zone)).second) return false;
  }
  return true;
}

class LiteralReader : public testing::TestWithParam<XelVectorLevel> {
 protected:
  void SetUp() override { XelSetVectorLevel(GetParam()); }
  void TearDown() override { XelSetVectorLevel(XelGetBestVectorLevel()); }
};

void compareTable(XelCsvTableReader table, const literal::Settings& settings, const literal::Zone& zone) {
  const Lines expected = readLiterally(settings, zone);
  EXPECT_EQ(read(table), expected);
  EXPECT_EQ(table.getNumberOfItems(), static_cast<long>(expected.size()));
  EXPECT_EQ(table.getNumberOfKeys(), static_cast<long>(zone.keyPositions.size()));
}

void compareTables(XelCsvReader& reader, const literal::Settings& settings) {
  const std::vector<literal::Table> tables = literal::scanTables(settings);
  ASSERT_EQ(reader.getNumberOfTables(), static_cast<long>(tables.size()));
  for (std::size_t number = 0; number < tables.size(); ++number) {
    XelCsvTableReader table = reader.getTableByNumber(static_cast<long>(number));
    EXPECT_EQ(table.getNameOfTable(), tables[number].name);
    compareTable(table, settings, literal::readHeadingZone(settings, &tables[number]));
    table.end();
  }
}

// Keys of up to two columns are given one value each.
XelCsvLine lookUp(XelCsvReader& reader, const literal::Line& line, const literal::Zone& zone) {
  const auto valueOf = [&](std::size_t key) { return line.fields[static_cast<std::size_t>(zone.keyPositions[key])]; };
  if (zone.keyPositions.size() == 1) return reader.getLineByKey(1, valueOf(0));
  return reader.getLineByKey(2, valueOf(0), valueOf(1));
}

// Every line of a file whose keys are unique is found by its key.
void compareKeys(XelCsvReader& reader, const literal::Settings& settings, const literal::Zone& zone, long step) {
  const literal::Index index(settings, zone);
  const auto walk = std::make_unique<literal::Walk>(settings, zone);
  const auto line = std::make_unique<literal::Line>();
  for (long number = 0; walk->next(); ++number) {
    if (number % step != 0) continue;
    const std::string key = literal::composeKey(walk->getLine(), zone);
    ASSERT_TRUE(index.read(key, *line)) << key;
    const XelCsvLine found = lookUp(reader, walk->getLine(), zone);
    EXPECT_EQ(describe(found.getLineNumber(), found.getFields(), found.getNumberOfFields()),
              describe(line->lineNumber, line->fields.data(), line->numberOfFields));
  }
}

// Files of 100 000 tables and lines that differ from others only in their number are left to the benchmarks.
bool isCompared(const std::string& name) { return name.rfind("grow-tables", 0) != 0 && name.rfind("count-", 0) != 0; }

XelCsvReader openReader(XelEnv env, const bench::Input& input, const std::string& fileName, bool isCached) {
  return XelCsvReader(env, fileName.c_str(), input.isMultiTable ? 1 : 0, 0, input.separators, input.decimal, '"', '#',
                      isCached ? 1 : 0);
}

// Answers whether lines were looked up.
bool compareFile(XelCsvReader& reader, const literal::Settings& settings, bool isCached) {
  if (settings.isMultiTable) {
    compareTables(reader, settings);
    return false;
  }
  const literal::Zone zone = literal::readHeadingZone(settings, nullptr);
  compareTable(reader.getReaderForUniqueTableFile(), settings, zone);
  if (!hasKeys(settings, zone)) return false;
  compareKeys(reader, settings, zone, isCached ? 1 : 100);
  return true;
}

TEST_P(LiteralReader, FindsTheSameInEveryInputOfTheBenchmarks) {
  const DataDirectory folder;
  long withKeys = 0;
  for (const bench::Input& input : bench::getInputs()) {
    if (!isCompared(input.name)) continue;
    SCOPED_TRACE(input.name);
    const std::string fileName = std::string(folder.getName()) + "/" + input.name;
    bench::writeInput(input, fileName, Divisor);
    const literal::Settings settings = {fileName, input.isMultiTable, input.separators, input.decimal, '"', '#'};

    const TestEnv env;
    XelCsvReader reader = openReader(env, input, fileName, false);
    const bool canBeCached = compareFile(reader, settings, false) || input.isMultiTable;
    reader.end();
    if (!canBeCached) continue;
    XelCsvReader cached = openReader(env, input, fileName, true);
    if (compareFile(cached, settings, true)) ++withKeys;
    cached.end();
  }
  // A change of the inputs must not take away what is looked up.
  EXPECT_EQ(withKeys, 16);
}

std::string nameOf(const testing::TestParamInfo<XelVectorLevel>& level) {
  return level.param == XelVectorLevel::Plain     ? "Plain"
         : level.param == XelVectorLevel::Bytes16 ? "Bytes16"
                                                  : "Bytes32";
}

INSTANTIATE_TEST_SUITE_P(EveryLevel, LiteralReader,
                         testing::Values(XelVectorLevel::Plain, XelVectorLevel::Bytes16, XelVectorLevel::Bytes32),
                         nameOf);

}  // namespace
