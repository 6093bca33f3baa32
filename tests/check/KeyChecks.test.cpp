// Findings about keys, and that the library does what they say.
#include "tests/check/Checking.h"

TEST(DuplicateKey, OfATableAmongSeveralMakesNoCachedTable) {
  CheckedFile file("Stock|NAMES,a,b\nStock|KEYS,1,0\nStock, x ,1\nStock,y,2\nStock,x,3\n", manyTables());
  EXPECT_EQ(file.show(),
            "5:1 error duplicate-key: line 3 has the same key, \"x\": for a cached table getTableByName throws "
            "XelDuplicatedLineException, one that is not finds that line by the key\n");
  EXPECT_XEL_THROW(
      file.read().getTableByName("Stock"), XelCsvReader::XelDuplicatedLineException,
      "XelCsvReader::XelDuplicatedLineException : Another line with key  x already exists In Table Stock .");
}

TEST(DuplicateKey, OfTwoKeyColumns) {
  CheckedFile file("Stock|NAMES,a,b\nStock|KEYS,1,1\nStock,x-y,z\nStock,x,y-z\n", manyTables(),
                   only({"duplicate-key"}));
  EXPECT_EQ(file.show(),
            "4:1 error duplicate-key: line 3 has the same key, \"x-y-z\": for a cached table getTableByName throws "
            "XelDuplicatedLineException, one that is not finds that line by the key\n");
  EXPECT_XEL_THROW(
      file.read().getTableByName("Stock"), XelCsvReader::XelDuplicatedLineException,
      "XelCsvReader::XelDuplicatedLineException : Another line with key  x-y-z already exists In Table Stock "
      ".");
  XelCsvTableReader table = file.read(false).getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getLineByKey(2, "x", "y-z").getLineNumber(), 2);
}

TEST(DuplicateKey, OfAOneTableFileEndsTheTable) {
  CheckedFile file("|NAMES,a,b\n|KEYS,1,0\nx,1\ny,2\n x ,3\nz,4\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "5:1 error duplicate-key: line 3 has the same key, \"x\": a cached reader silently reads that line again in place of this one and ends the table here; one that is not finds that line by the key\n");
  XelCsvReader& reader = file.read();
  EXPECT_EQ(reader.getLineByKey(1, "x").getLineNumber(), 2);
  EXPECT_EQ(reader.getLineByNumber(2).getLineNumber(), 2);
  EXPECT_EQ(reader.getNumberOfItems(), 3);
  EXPECT_XEL_THROW(reader.getLineByKey(1, "z"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key z .");
  XelCsvReader& scanning = file.read(false);
  EXPECT_EQ(scanning.getLineByKey(1, "x").getLineNumber(), 2);
  EXPECT_EQ(scanning.getLineByKey(1, "z").getLineNumber(), 5);
}

TEST(DuplicateKey, WithoutKeyLineAllColumnsAreTheKey) {
  CheckedFile file("a,1\na,2\na,1\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "3:1 error duplicate-key: line 1 has the same key, \"a-1\" (without a key line it is made of 2 columns): a cached reader silently reads that line again in place of this one and ends the table here; one that is not finds that line by the key\n");
}

// Its key would be made of the first field twice; the library asks first whether there are as many fields as keys.
TEST(DuplicateKey, IsNotSaidOfALineThatHasFewerFieldsThanTheKey) {
  CheckedFile file("|NAMES KEYS,1,0,0\n|KEYS,1,0\n1,a\n1\n", oneTable(), only({"duplicate-key"}));
  EXPECT_EQ(file.show(), "");
  EXPECT_XEL_THROW(file.read(), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (2) exceeds the number of "
                   "fields of the current line (1), line number 3");
}

TEST(DuplicateKey, IsToldOfEachLine) {
  CheckedFile file("a\nb\na\na\n", oneTable());
  ASSERT_EQ(file.getFindings().size(), 2U);
  EXPECT_EQ(file.getFindings()[0].line, 3);
  EXPECT_EQ(file.getFindings()[1].line, 4);
}

TEST(DuplicateKey, IsFoundAmongThousands) {
  std::string text;
  for (int line = 0; line < 5000; ++line) text += std::to_string(line * 7) + '\n';
  EXPECT_EQ(CheckedFile(text, oneTable()).show(), "");
  CheckedFile file(text + "3500\n", oneTable());
  ASSERT_EQ(file.getFindings().size(), 1U);
  EXPECT_EQ(file.getFindings()[0].message.substr(0, 36), "line 501 has the same key, \"3500\" (w");
}

TEST(DuplicateKey, IsOfOneTable) {
  EXPECT_EQ(CheckedFile("Stock,1\nPrice,1\n", manyTables()).show(), "");
  CheckedFile file("Stock,1\nPrice,1\nStock,1\n", splitTables(), only({"duplicate-key"}));
  ASSERT_EQ(file.getFindings().size(), 1U);
  EXPECT_EQ(file.getFindings()[0].line, 3);
  EXPECT_EQ(file.getFindings()[0].table, "Stock");
}

TEST(DuplicateKey, OfATableWithoutColumnsIsEmpty) {
  CheckedFile file("Stock\nStock\n", manyTables());
  EXPECT_EQ(
      file.show(),
      "2:1 error duplicate-key: line 1 has the same key, \"\" (without a key line it is made of 0 columns): for a "
      "cached table getTableByName throws XelDuplicatedLineException, one that is not finds that line by the key\n");
  EXPECT_XEL_THROW(
      file.read().getTableByName("Stock"), XelCsvReader::XelDuplicatedLineException,
      "XelCsvReader::XelDuplicatedLineException : Another line with key   already exists In Table Stock .");
}

TEST(KeyWithDash, IsFoundByOtherValuesToo) {
  CheckedFile file("|KEYS,1,1\na-b,c\nd-e,f\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "2:1 note key-with-dash: \"a-b\" holds a dash, with which the values of a key are joined: getLineByKey finds "
      "the line by values that are split elsewhere too\n");
  EXPECT_EQ(file.read().getLineByKey(2, "a", "b-c").getLineNumber(), 1);
}

TEST(KeyWithDash, MattersOnlyWhereSeveralColumnsWereChosen) {
  EXPECT_EQ(CheckedFile("|KEYS,1,0\na-b,c\n", oneTable()).show(), "");
  EXPECT_EQ(CheckedFile("a-b,c\n", oneTable()).show(), "");
}
