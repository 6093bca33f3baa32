// A hundred thousand tables in one file.
#include <gtest/gtest.h>

#include "tests/limits/Figures.h"
#include "tests/limits/LargeFile.h"
#include "tests/support/ExpectThrow.h"

namespace {

constexpr long TableCount = 100'000;
constexpr long NameSize = 11;            // of each name
constexpr long MostBytesPerTable = 200;  // without the name's text
constexpr long LinesPerTable = 3;        // a key line and two others

std::string nameOfTable(long number) {
  const std::string digits = std::to_string(number);
  return "Table" + std::string(6 - digits.size(), '0') + digits;
}

std::string lineOf(long table, long line) {
  return std::to_string(LinesPerTable * table + 1 + line) + ": [" + nameOfTable(table) + "][" +
         (line == 0 ? "a" : "b") + "][" + std::to_string(table) + "]";
}

void expectTable(XelCsvTableReader& table, long number) {
  EXPECT_EQ(table.getNameOfTable(), nameOfTable(number));
  EXPECT_EQ(table.getNumberOfItems(), 2);
  EXPECT_EQ(textOf(table.getLineByNumber(0)), lineOf(number, 0));
  EXPECT_EQ(textOf(table.getLineByKey(1, "b")), lineOf(number, 1));
}

}  // namespace

TEST(HundredThousandTables, AreFoundByNameAndByNumberAndWalked) {
  LargeFile file;
  for (long table = 0; table < TableCount; ++table) {
    const std::string name = nameOfTable(table);
    const std::string value = std::to_string(table);
    file.append(name + "|KEYS,1,0\n" + name + ",a," + value + "\n" + name + ",b," + value + "\n");
  }
  file.finish();
  forBothKinds([&](Kind kind) {
    CountedEnv env;
    XelCsvReader reader;
    const std::string what = std::string("100000 tables, ") + nameOf(kind) + ": ";
    report(what + "making the directory", getSecondsOf([&] { reader = openFile(env, file.getName(), kind, true); }),
           "s");
    const double perTable = static_cast<double>(env.getBytes()) / TableCount;
    report(what + "memory per table, names of 11 bytes", perTable, "bytes");
    EXPECT_LT(perTable, NameSize + MostBytesPerTable);

    EXPECT_EQ(reader.getNumberOfTables(), TableCount);
    for (const long number : {0L, 1L, TableCount / 2, TableCount - 1}) {
      EXPECT_TRUE(reader.isTableExists(nameOfTable(number).c_str()));
      XelCsvTableReader byName = reader.getTableByName(nameOfTable(number).c_str());
      expectTable(byName, number);
      byName.end();
      XelCsvTableReader byNumber = reader.getTableByNumber(number);
      expectTable(byNumber, number);
      byNumber.end();
    }
    EXPECT_FALSE(reader.isTableExists("Table100000"));
    EXPECT_XEL_THROW(
        reader.getTableByNumber(TableCount), XelCsvReader::XelTableNotFoundException,
        "XelCsvReader::XelTableNotFoundException : No Table number 100000.The number of tables is 100000.");

    const double walk = getSecondsOf([&] {
      long tables = 0;
      for (XelCsvReader::TableIterator it(reader); it.ok(); ++it, ++tables) {
        XelCsvTableReader table = *it;
        ASSERT_EQ(table.getNameOfTable(), nameOfTable(tables));
        ASSERT_EQ(textOf(table.getLineByNumber(1)), lineOf(tables, 1));
        table.end();
      }
      EXPECT_EQ(tables, TableCount);
    });
    report(what + "opening a table and looking a line up", walk / TableCount * 1e6, "us");
    reader.end();
  });
}
