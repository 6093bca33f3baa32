// Findings about tables and their lines, and that the library does what they say.
#include "tests/check/Checking.h"

TEST(Ragged, AMissingFieldThrowsWhenItIsAskedFor) {
  CheckedFile file("|NAMES,a,b,c\n|KEYS,1,0,0\n1,2\n", oneTable());
  EXPECT_EQ(file.show(),
            "3:4 error ragged: 2 fields where the heading line has 3: getStringByPosition(2) throws "
            "XelFieldNotFoundException\n");
  const XelCsvLine line = file.read().getLineByNumber(0);
  EXPECT_XEL_THROW(
      line.getStringByPosition(2), XelCsvReader::XelFieldNotFoundException,
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 2 while trying "
      "getStringByPosition");
}

TEST(Ragged, TooFewFieldsForTheKeyMakeNoCachedTable) {
  CheckedFile file("Stock|NAMES,a,b,c\nStock,1\n", manyTables());
  EXPECT_EQ(file.show(),
            "2:8 error ragged: 2 fields where the heading line has 4: the key lacks a field, getTableByName throws "
            "XelCsvReaderException for a cached table, getLineByKey for one that is not\n");
  const char* const message =
      "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (3) exceeds the number of fields of the "
      "current line (2), line number 1 in table Stock";
  EXPECT_XEL_THROW(file.read().getTableByName("Stock"), XelCsvReader::XelCsvReaderException, message);
  XelCsvTableReader table = file.read(false).getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_XEL_THROW(table.getLineByKey(3, "1", "2", "3"), XelCsvReader::XelCsvReaderException, message);
}

TEST(Ragged, AMissingFieldOfTheKeyMakesNoCachedTable) {
  CheckedFile file("|NAMES,a,b,c\n|KEYS,0,0,1\n1,2\n", oneTable());
  EXPECT_EQ(file.show(),
            "3:4 error ragged: 2 fields where the heading line has 3: the key lacks a field, the constructor of "
            "XelCsvReader throws XelFieldNotFoundException for a cached table, getLineByKey for one that is not\n");
  const char* const message =
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 2 while trying "
      "getStringByPosition";
  EXPECT_XEL_THROW(file.read(), XelCsvReader::XelFieldNotFoundException, message);
  EXPECT_XEL_THROW(file.read(false).getLineByKey(1, "3"), XelCsvReader::XelFieldNotFoundException, message);
}

TEST(Ragged, FieldsTooManyAreReadByPosition) {
  CheckedFile file("|NAMES,a\n1,2,3\n", oneTable());
  EXPECT_EQ(file.show(),
            "2:3 warning ragged: 3 fields where the heading line has 1: from position 1 on they are read by position "
            "only\n");
  EXPECT_EQ(file.getFindings()[0].length, 3);
  EXPECT_EQ(file.read().getLineByNumber(0).getIntByPosition(2), 3);
}

TEST(Ragged, WithoutHeadingLineTheKeyLineOrTheFirstLineTells) {
  EXPECT_EQ(
      CheckedFile("|KEYS,1,0\n1,2,3\n", oneTable()).show(),
      "2:5 warning ragged: 3 fields where the key line has 2: from position 2 on they are read by position only\n");
  EXPECT_EQ(CheckedFile("1,2\n1\n", oneTable()).show(),
            "2:2 error ragged: 1 field where the first line of data has 2: the key lacks a field, the constructor of "
            "XelCsvReader throws XelCsvReaderException for a cached table, getLineByKey for one that is not\n");
}

TEST(BlankName, BelongsToNoTable) {
  CheckedFile file(",1\nStock,2\n  ,3\n", manyTables());
  EXPECT_EQ(
      file.show(),
      "1:1 error blank-name: this line does not begin with a table's name: it belongs to no table and is not read, "
      "or, between two lines of a table, reads silently as a line of it\n"
      "3:1 error blank-name: this line does not begin with a table's name: it belongs to no table and is not read, "
      "or, between two lines of a table, reads silently as a line of it\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 1);
}

TEST(BlankName, BetweenLinesOfATableReadsAsOneOfThem) {
  CheckedFile file("Stock,1\n,2\nStock,3\n", manyTables());
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 3);
}

TEST(BlankName, WithTableSplittingIsNeverRead) {
  CheckedFile file("Stock,1\n,2\nStock,3\n", splitTables());
  EXPECT_EQ(file.show(),
            "2:1 error blank-name: this line does not begin with a table's name: it belongs to no table and is not "
            "read\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 2);
}

TEST(BlankName, InFrontOfABarMakesATableBehindTheFirst) {
  const char* const message =
      "error blank-name: this line does not begin with a table's name: it belongs to a table whose name is empty\n";
  CheckedFile file("Stock,1\n|NAMES,a\n", manyTables(), only({"blank-name"}));
  EXPECT_EQ(file.show(), std::string("2:1 ") + message);
  EXPECT_TRUE(file.read().isTableExists(""));
  CheckedFile split("|NAMES,a\n", splitTables(), only({"blank-name"}));
  EXPECT_EQ(split.show(), std::string("1:1 ") + message);
  EXPECT_TRUE(split.read().isTableExists(""));
  CheckedFile first("|NAMES,a\n", manyTables(), only({"blank-name"}));
  EXPECT_EQ(first.getFindings().size(), 1U);
  EXPECT_FALSE(first.read().isTableExists(""));
}

TEST(QuotedName, KeepsItsQuotes) {
  CheckedFile file("\"Stock\",1\n\"Stock\",2\n", manyTables());
  EXPECT_EQ(file.show(),
            "1:1 error quoted-name: quotes belong to the name of a table: getTableByName(\"Stock\") throws "
            "XelTableNotFoundException\n");
  EXPECT_XEL_THROW(file.read().getTableByName("Stock"), XelCsvReader::XelTableNotFoundException,
                   "XelCsvReader::XelTableNotFoundException : No Table having this name Stock.");
}

TEST(QuotedName, WithTableSplittingHasNoLines) {
  CheckedFile file("\"Stock\",1\n", splitTables());
  EXPECT_EQ(file.show(),
            "1:1 error quoted-name: quotes belong to the name of a table: getTableByName(\"Stock\") throws "
            "XelTableNotFoundException, and the table with the quotes in its name has no lines\n");
  XelCsvTableReader table = file.read().getTableByName("\"Stock\"");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 0);
}

TEST(DuplicateTable, IsToldOnceATable) {
  CheckedFile file("Stock,1\nPrice,1\nStock,2\nPrice,2\nStock,3\n", manyTables());
  EXPECT_EQ(file.show(),
            "3:1 error duplicate-table: table \"Stock\" of line 1 comes back behind another table: without table "
            "splitting the constructor of XelCsvReader throws XelDuplicatedTableException\n"
            "4:1 error duplicate-table: table \"Price\" of line 2 comes back behind another table: without table "
            "splitting the constructor of XelCsvReader throws XelDuplicatedTableException\n");
  EXPECT_XEL_THROW(file.read(), XelCsvReader::XelDuplicatedTableException,
                   "XelCsvReader::XelDuplicatedTableException : Another table with name Stock already exists. Table "
                   "splitting is not specified. ");
}

TEST(SplitTable, ReadsAsOne) {
  CheckedFile file("Stock,1\nPrice,1\nStock,2\nPrice,2\nStock,3\n", splitTables());
  EXPECT_EQ(file.show(),
            "3:1 note split-table: table \"Stock\" of line 1 comes back behind another table: its lines read as one "
            "table\n"
            "4:1 note split-table: table \"Price\" of line 2 comes back behind another table: its lines read as one "
            "table\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 3);
}

TEST(ReservedTableOrder, CountsATableThatIsNotAtTheStart) {
  CheckedFile file("XELO_DATA_SCHEMA,planner,1\nXELO_CSV_FORMAT,1\nStock,1\n", manyTables());
  EXPECT_EQ(file.show(),
            "2:1 warning reserved-table-order: XELO_CSV_FORMAT is not the first table of the file: getNumberOfTables() "
            "counts it and a TableIterator visits it like any other table\n");
  EXPECT_EQ(file.read().getNumberOfTables(), 2);
  CheckedFile behind("XELO_CSV_FORMAT,1\nStock,1\nXELO_DATA_SCHEMA,planner,1\n", manyTables());
  EXPECT_EQ(
      behind.show(),
      "3:1 warning reserved-table-order: XELO_DATA_SCHEMA is neither the first table of the file nor the one behind "
      "XELO_CSV_FORMAT: getNumberOfTables() counts it and a TableIterator visits it like any other table\n");
  EXPECT_EQ(behind.read().getNumberOfTables(), 2);
}

TEST(ReservedTableOrder, IsRightWithEitherTableFirst) {
  EXPECT_EQ(CheckedFile("XELO_CSV_FORMAT,1\nXELO_DATA_SCHEMA,planner,1\nStock,1\n", manyTables()).show(), "");
  EXPECT_EQ(CheckedFile("XELO_DATA_SCHEMA,planner,1\nStock,1\n", manyTables()).show(), "");
}

TEST(MissingDirectivesField, ThrowsWhenItIsAskedFor) {
  CheckedFile format("XELO_CSV_FORMAT\n", manyTables());
  EXPECT_EQ(
      format.show(),
      "1:16 error missing-directives-field: field 1, the version of the format, is missing: getCsvFormat() throws "
      "XelFieldNotFoundException\n");
  EXPECT_XEL_THROW(format.read().getCsvFormat(), XelCsvReader::XelFieldNotFoundException,
                   "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 1 in line number 0, in table "
                   "XELO_CSV_FORMAT while trying getFloatByPosition");
  CheckedFile nothing("XELO_DATA_SCHEMA\n", manyTables());
  EXPECT_EQ(
      nothing.show(),
      "1:17 error missing-directives-field: fields 1 and 2, what requires the data and their version, are missing: "
      "getRequiredBy() and getFileVersion() throw XelFieldNotFoundException\n");
  const char* const message =
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 1 in line number 0, in table "
      "XELO_DATA_SCHEMA while trying getStringByPosition";
  EXPECT_XEL_THROW(nothing.read().getRequiredBy(), XelCsvReader::XelFieldNotFoundException, message);
  EXPECT_XEL_THROW(nothing.read().getFileVersion(), XelCsvReader::XelFieldNotFoundException, message);
}

TEST(MissingDirectivesField, OfTheVersionThrowsOnce) {
  CheckedFile file("XELO_DATA_SCHEMA,planner\n", manyTables());
  EXPECT_EQ(file.show(),
            "1:25 error missing-directives-field: field 2, the version of the data, is missing: getFileVersion() or "
            "getRequiredBy(), whichever is called first, throws XelFieldNotFoundException\n");
  const char* const message =
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 0, in table "
      "XELO_DATA_SCHEMA while trying getFloatByPosition";
  EXPECT_XEL_THROW(file.read().getFileVersion(), XelCsvReader::XelFieldNotFoundException, message);
  XelCsvReader& reader = file.read();
  EXPECT_XEL_THROW(reader.getRequiredBy(), XelCsvReader::XelFieldNotFoundException, message);
  EXPECT_STREQ(reader.getRequiredBy(), "planner");
}

TEST(EmptyTable, HasNoItems) {
  CheckedFile file("Stock|NAMES,a\nPrice,1\n", manyTables());
  EXPECT_EQ(file.show(), "1:1 note empty-table: table \"Stock\" has no line of data: getNumberOfItems() answers 0\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 0);
}

TEST(EmptyTable, IsAFileWithoutLinesToo) {
  CheckedFile one("", oneTable());
  EXPECT_EQ(one.show(), "0:0 note empty-table: the file has no line of data: getNumberOfItems() answers 0\n");
  EXPECT_EQ(one.read().getNumberOfItems(), 0);
  EXPECT_EQ(CheckedFile("# nothing\n\n", oneTable()).getFindings().size(), 1U);
  CheckedFile many("# nothing\n", manyTables());
  EXPECT_EQ(many.show(), "0:0 note empty-table: the file has no table: getNumberOfTables() answers 0\n");
  EXPECT_EQ(many.read().getNumberOfTables(), 0);
}
