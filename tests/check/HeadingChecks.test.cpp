// Findings about heading lines, key lines and comments, and that the library does what they say.
#include "tests/check/Checking.h"

TEST(CommentBeforeHeadings, MakesTheHeadingsData) {
  CheckedFile file("# items\n|NAMES,a\n|KEYS,1\n1\n", oneTable());
  EXPECT_EQ(file.show(),
            "1:1 error comment-before-headings: the first line is a comment, which ends the heading zone: the heading "
            "and key lines behind it read silently as data, and getPosition() throws "
            "XelColumnHeaderNotFoundException\n");
  XelCsvReader& reader = file.read();
  EXPECT_EQ(reader.getNumberOfItems(), 3);
  EXPECT_STREQ(reader.getLineByNumber(0).getStringByPosition(0), "|NAMES");
  EXPECT_XEL_THROW(reader.getPosition("a"), XelCsvReader::XelColumnHeaderNotFoundException,
                   std::string("XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in file ") +
                       file.getName() + ' ');
}

TEST(CommentBeforeHeadings, CountsTheColumnsInTheComment) {
  CheckedFile file("# items, old\n1,2,3\n4,5,6\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "1:1 warning comment-before-headings: the first line is a comment, in which the library counts the columns: "
      "getNumberOfColumns() answers 2, and the key is made of as many\n");
  EXPECT_EQ(file.read().getNumberOfColumns(), 2);
  EXPECT_EQ(file.read().getNumberOfKeys(), 2);
}

TEST(CommentBeforeHeadings, IsAnEmptyFirstLineToo) {
  CheckedFile file("\n|NAMES,a\n1\n", oneTable());
  EXPECT_EQ(file.show(),
            "1:1 error comment-before-headings: the first line is empty, which ends the heading zone: the heading and "
            "key lines behind it read silently as data, and getPosition() throws XelColumnHeaderNotFoundException\n");
  EXPECT_EQ(file.read().getNumberOfItems(), 2);
}

TEST(CommentBeforeHeadings, IsAHeadingLineWhereItLooksLikeOne) {
  CheckedFile file("#|NAMES,a\n1\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "1:1 error comment-before-headings: the first line is taken as it stands: this comment, with a bar and NAMES "
      "or KEYS in its first field, reads silently as a heading or key line\n");
  EXPECT_EQ(file.read().getPosition("a"), 0);
}

TEST(CommentBeforeHeadings, DoesNotMatterInAFileOfSeveralTables) {
  EXPECT_EQ(CheckedFile("# items\nStock|NAMES,a\nStock,1\n", manyTables()).show(), "");
}

TEST(CommentBeforeHeadings, StillCountsTheFieldsOfTheHeadings) {
  CheckedFile file("# items\n|NAMES,a,b\n1\n", oneTable(), only({"ragged"}));
  EXPECT_EQ(file.show(),
            "3:2 error ragged: 1 field where the heading line has 2: getStringByPosition(1) throws "
            "XelFieldNotFoundException\n");
}

TEST(CommentWithBlank, IsALineOfData) {
  CheckedFile file("1\n\t# items\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "2:1 warning comment-with-blank: a comment begins with the first byte of its line; behind a blank this reads "
      "silently as a line of data\n");
  EXPECT_EQ(file.read().getNumberOfItems(), 2);
}

TEST(CommentWithBlank, BeginsATableOfItsOwn) {
  CheckedFile file("Stock,1\n  # items, old\nStock,2\n", manyTables());
  EXPECT_EQ(
      file.show(),
      "2:1 warning comment-with-blank: a comment begins with the first byte of its line; behind a blank this reads "
      "silently as a line of a table called \"# items\"\n"
      "2:3 note blank-around-name: spaces stand around the name of the table \"# items\", which getTableByName "
      "finds without them\n"
      "3:1 error duplicate-table: table \"Stock\" of line 1 comes back behind another table: without table "
      "splitting the constructor of XelCsvReader throws XelDuplicatedTableException\n");
  EXPECT_XEL_THROW(file.read(), XelCsvReader::XelDuplicatedTableException,
                   "XelCsvReader::XelDuplicatedTableException : Another table with name Stock already exists. Table "
                   "splitting is not specified. ");
  EXPECT_TRUE(CheckedFile("  # items\n", manyTables()).read().isTableExists("# items"));
}

TEST(DuplicateHeading, OfWhichTheLeftmostIsFound) {
  CheckedFile file("|NAMES,a,b, a \n1,2,3\n", oneTable(), only({"duplicate-heading"}));
  EXPECT_EQ(
      file.show(),
      "1:12 warning duplicate-heading: the heading \"a\" stands in this line before: getPosition() finds the column "
      "at position 0, the values of this one are read by position only\n");
  EXPECT_EQ(file.read().getPosition("a"), 0);
  CheckedFile many("Stock|NAMES,a,a\nStock,1,2\n", manyTables());
  ASSERT_EQ(many.getFindings().size(), 1U);
  EXPECT_EQ(many.getFindings()[0].message,
            "the heading \"a\" stands in this line before: getPosition() finds the column at position 1, the values of "
            "this one are read by position only");
  XelCsvTableReader table = many.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getPosition("a"), 1);
}

TEST(EmptyHeading, IsToldOnceInALine) {
  CheckedFile file("|NAMES,,b, \n1,2,3\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "1:8 warning empty-heading: the column at position 0 has an empty heading: its values are read by position, "
      "or by \"\" as their heading\n");
  EXPECT_EQ(file.read().getPosition(""), 0);
}

TEST(BlankAroundName, IsTrimmedWhereItIsSpaces) {
  CheckedFile file("Stock |NAMES, a ,b \nStock ,1,2\n", manyTables());
  EXPECT_EQ(
      file.show(),
      "1:1 note blank-around-name: spaces stand around the name of the table \"Stock\", which getTableByName finds "
      "without them\n"
      "1:15 note blank-around-name: spaces stand around the heading \"a\", which getPosition finds without them\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getPosition("a"), 1);
  EXPECT_EQ(table.getPosition("b"), 2);
}

TEST(BlankAroundName, BelongsToTheNameWhereItIsATabOrNoBreakSpace) {
  for (const std::string blank : {"\t", "\xC2\xA0"}) {
    CheckedFile heading("|NAMES,a" + blank + "\n1\n", oneTable());
    EXPECT_EQ(
        heading.show(),
        "1:8 warning blank-around-name: a tab or no-break space stands beside the heading \"a\" and belongs to it: "
        "getPosition(\"a\") finds nothing and throws\n");
    EXPECT_XEL_THROW(heading.read().getPosition("a"), XelCsvReader::XelColumnHeaderNotFoundException,
                     "XelCsvReader::XelColumnHeaderNotFoundException : Heading a not found");
    CheckedFile name("Stock" + blank + ",1\n", manyTables());
    EXPECT_EQ(
        name.show(),
        "1:1 warning blank-around-name: a tab or no-break space stands beside the name of the table \"Stock\" and "
        "belongs to it: getTableByName(\"Stock\") finds nothing and throws\n");
    EXPECT_FALSE(name.read().isTableExists("Stock"));
  }
}

TEST(HeadingAfterData, IsALineOfData) {
  CheckedFile file("Stock,1\nStock|NAMES,a\nStock|keys,0\n", manyTables());
  const char* const message =
      "error heading-after-data: heading and key lines count only in front of all other lines of a table: this one reads "
      "silently as a line of data\n";
  EXPECT_EQ(file.show(), std::string("2:1 ") + message + "3:1 " + message);
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 3);
  EXPECT_FALSE(table.isHeadingExists("a"));
}

TEST(HeadingAfterData, WithTableSplittingIsSkippedBehindDataOfWhateverTable) {
  CheckedFile file("Stock|NAMES,a\nPrice,1\nStock|KEYS,1\nStock,2\n", splitTables(), only({"heading-after-data"}));
  EXPECT_EQ(file.show(),
            "3:1 error heading-after-data: heading and key lines count only in front of the first line of data, of "
            "whatever table: this one is skipped silently\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 1);
}

TEST(MarkerCase, SkipsTheLine) {
  CheckedFile file("Stock|Names,a\nStock,1\n", manyTables());
  EXPECT_EQ(
      file.show(),
      "1:1 error marker-case: NAMES and KEYS mark a line in capital letters only: this one is skipped silently\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 1);
  EXPECT_FALSE(table.isHeadingExists("a"));
}

TEST(MarkerCase, CountsTheMarkerAsAColumnOfAOneTableFile) {
  CheckedFile file("|names,a\n1\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "1:1 error marker-case: NAMES and KEYS mark a line in capital letters only: this one is skipped silently, "
      "and where no other line names the columns its 2 fields are counted as columns, of which the key is made\n"
      "2:2 error ragged: 1 field where the key takes 2: the key lacks a field, the constructor of XelCsvReader throws "
      "XelCsvReaderException for a cached table, getLineByKey for one that is not\n");
  EXPECT_XEL_THROW(file.read(), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (2) exceeds the number of "
                   "fields of the current line (1), line number 1");
}

TEST(UnknownMarker, SkipsTheLine) {
  CheckedFile file("a|b\nc\n", oneTable());
  EXPECT_EQ(file.show(),
            "1:1 warning unknown-marker: a bar in the first field and neither NAMES nor KEYS: this line is skipped "
            "silently\n");
  EXPECT_EQ(file.read().getNumberOfItems(), 1);
}

TEST(KeyLineNoOnes, MakesAllColumnsTheKey) {
  CheckedFile file("|NAMES,a,b\n|KEYS,0,2\n1,2\n", oneTable());
  EXPECT_EQ(
      file.show(),
      "2:1 warning key-line-no-ones: no field of the key line is 1: all 2 columns together are the key, as without "
      "a key line\n");
  EXPECT_EQ(file.read().getNumberOfKeys(), 2);
}

TEST(KeyLineOverflow, MakesNoTable) {
  CheckedFile one("|KEYS,1,3000000000,3000000000\n1,2,3\n", oneTable());
  EXPECT_EQ(
      one.show(),
      "1:9 error key-line-overflow: a key line tells a key column by 1, and no number of it may be larger than 32 "
      "bits: the constructor of XelCsvReader throws XelOverflowException\n");
  EXPECT_XEL_THROW(one.read(), XelCsvReader::XelOverflowException,
                   "XelCsvReader::XelOverflowException : OVERFLOW while reading field 2  of line number 0 as integer");
  CheckedFile many("Stock|KEYS,1,3000000000\nStock,1,2\n", manyTables());
  EXPECT_EQ(
      many.show(),
      "1:14 error key-line-overflow: a key line tells a key column by 1, and no number of it may be larger than 32 "
      "bits: getTableByName throws XelOverflowException\n");
  EXPECT_XEL_THROW(
      many.read(false).getTableByName("Stock"), XelCsvReader::XelOverflowException,
      "XelCsvReader::XelOverflowException : OVERFLOW while reading field 2  of line number 0 in table Stock "
      "as integer");
}

TEST(UnknownMarker, WithTableSplittingSkipsLinesOfDataToo) {
  CheckedFile file("Stock,1\nStock|old,2\n", splitTables());
  EXPECT_EQ(
      file.show(),
      "2:1 warning unknown-marker: a bar in the first field, behind lines of data: with table splitting this line "
      "is skipped silently\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_EQ(table.getNumberOfItems(), 1);
  EXPECT_EQ(CheckedFile("Stock,1\nStock|old,2\n", manyTables()).show(), "");
}

TEST(ForeignHeading, ReplacesTheHeadingsAndAddsToTheKeys) {
  CheckedFile file("Stock|NAMES,a,b\nStock|KEYS,1,0\nPrice|NAMES,c,d\nPrice|KEYS,0,1\nPrice,1,2\nStock,1,2\n",
                   splitTables());
  EXPECT_EQ(
      file.show(),
      "3:1 error foreign-heading: with table splitting the heading zone of table \"Stock\" goes on over this line: "
      "its headings or keys read silently as those of that table\n");
  XelCsvTableReader table = file.read().getTableByName("Stock");
  EndGuard ended(table);
  EXPECT_FALSE(table.isHeadingExists("a"));
  EXPECT_EQ(table.getPosition("c"), 1);
  EXPECT_EQ(table.getNumberOfKeys(), 2);
}

TEST(ForeignHeading, IsNoneWhereNoMoreLinesOfTheTableCome) {
  EXPECT_EQ(CheckedFile("Stock|NAMES,a\nPrice|NAMES,b\nPrice,1\n", splitTables(), only({"foreign-heading"})).show(),
            "");
}

TEST(ForeignHeading, MayBeAKeyLineThatIsTooLarge) {
  CheckedFile file("Stock|NAMES,a\nPrice|KEYS,3000000000\nStock,1\n", splitTables(), only({"key-line-overflow"}));
  ASSERT_EQ(file.getFindings().size(), 2U);
  EXPECT_EQ(file.getFindings()[0].table, "Price");
  EXPECT_EQ(file.getFindings()[1].table, "Stock");
  EXPECT_THROW(file.read().getTableByName("Stock"), XelCsvReader::XelOverflowException);
}
