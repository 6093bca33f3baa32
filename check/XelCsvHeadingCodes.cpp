#include "check/XelCsvCodes.h"

void XelDescribeHeadingCodes(XelCsvCatalogue& catalogue) {
  const XelCsvCheckParameters one = XelReadAsOneTable();
  const XelCsvCheckParameters many = XelReadAsManyTables();
  const XelCsvCheckParameters split = XelReadAsSplitTables();

  catalogue.set(
      XelCsvCode::CommentBeforeHeadings,
      {"comment-before-headings",
       XelCsvSeverity::Error,
       "comment or empty line as first line of a table",
       "A file of one table begins with a comment or an empty line.",
       "The first line of a table is taken as it stands, and a comment ends the heading zone at once: heading "
       "and key lines behind it read without a word as data. Without them the library counts the columns, and "
       "the fields of the key, in the comment.",
       "Put the comment behind the heading lines.",
       {"# items\n|NAMES,a\n1\n", one},
       {"|NAMES,a\n# items\n1\n", one}});

  catalogue.set(
      XelCsvCode::CommentWithBlank,
      {"comment-with-blank",
       XelCsvSeverity::Warning,
       "blank in front of a comment",
       "A line begins with spaces or tabs and goes on with the comment character.",
       "Only the first byte of a line makes it a comment. This one reads without a word as a line of data; in "
       "a file of several tables it begins a table of its own.",
       "Remove the blanks.",
       {"1\n # items\n", one},
       {"1\n# items\n", one}});

  catalogue.set(XelCsvCode::DuplicateHeading,
                {"duplicate-heading",
                 XelCsvSeverity::Warning,
                 "two columns with one heading",
                 "A heading line names two columns alike.",
                 "Lookups by heading find the leftmost; the others are read by position only.",
                 "Give each column a heading of its own.",
                 {"|NAMES,a,a\n1,2\n", one},
                 {"|NAMES,a,b\n1,2\n", one}});

  catalogue.set(XelCsvCode::EmptyHeading,
                {"empty-heading",
                 XelCsvSeverity::Warning,
                 "column without heading",
                 "A heading line has an empty field, perhaps because it ends with a separator.",
                 "The column is read by its position, or by the empty text as its heading.",
                 "Name the column, or remove the separator at the end of the line.",
                 {"|NAMES,a,\n1,2\n", one},
                 {"|NAMES,a,b\n1,2\n", one}});

  catalogue.set(XelCsvCode::BlankAroundName,
                {"blank-around-name",
                 XelCsvSeverity::Warning,
                 "blank around a name",
                 "Spaces stand around the name of a table or column, or a tab or no-break space beside it.",
                 "Spaces are removed, and the name is found without them. A tab or no-break space belongs to the name, "
                 "and a lookup without it throws.",
                 "Remove the blank.",
                 {"|NAMES,a\t\n1\n", one},
                 {"|NAMES,a\n1\n", one}});

  catalogue.set(
      XelCsvCode::HeadingAfterData,
      {"heading-after-data",
       XelCsvSeverity::Error,
       "heading or key line behind lines of data",
       "A line is marked with a bar and NAMES or KEYS, and stands behind the first line of data of its table, "
       "or, in a file with table splitting, of another.",
       "It reads without a word as a line of data, and its headings or keys are not known.",
       "Put heading and key lines in front of the lines of data.",
       {"1\n|NAMES,a\n", one},
       {"|NAMES,a\n1\n", one}});

  catalogue.set(
      XelCsvCode::ForeignHeading,
      {"foreign-heading",
       XelCsvSeverity::Error,
       "heading or key line of another table",
       "The file is read with table splitting, and between the heading lines and the data of a table stand "
       "heading or key lines of another, as where a file begins with the headings of all its tables.",
       "The heading zone of a table goes on over lines of whatever table until one has no bar in its first "
       "field: the headings of the other table replace its own, and its key columns are added, without a word.",
       "Let the first line of data of each table follow its heading and key lines.",
       {"Stock|NAMES,a\nPrice|NAMES,b\nPrice,1\nStock,1\n", split},
       {"Stock|NAMES,a\nStock,1\nPrice|NAMES,b\nPrice,1\n", split}});

  catalogue.set(
      XelCsvCode::MarkerCase,
      {"marker-case",
       XelCsvSeverity::Error,
       "NAMES or KEYS in small letters",
       "A line in front of the data is marked with a bar and with NAMES or KEYS in small letters.",
       "Only capital letters count. The line is skipped without a word, and its headings or keys are not known.",
       "Write NAMES or KEYS.",
       {"Stock|names,a\nStock,1\n", many},
       {"Stock|NAMES,a\nStock,1\n", many}});

  catalogue.set(
      XelCsvCode::UnknownMarker,
      {"unknown-marker",
       XelCsvSeverity::Warning,
       "bar in the first field of the first lines",
       "A line in front of the data has a bar in its first field, and neither NAMES nor KEYS.",
       "The bar makes it a line of the heading zone, where it is skipped without a word.",
       "Mark it with NAMES or KEYS; where it is data, write another character instead of the bar, or a heading "
       "line and another line of data in front of it.",
       {"a|b\nc\n", one},
       {"a b\nc\n", one}});

  catalogue.set(XelCsvCode::KeyLineNoOnes, {"key-line-no-ones",
                                            XelCsvSeverity::Warning,
                                            "key line without a 1",
                                            "A key line marks a key column by a field that is 1, and has none.",
                                            "All columns together are the key, as without a key line.",
                                            "Write 1 under each key column, or remove the line.",
                                            {"|KEYS,0\n1\n", one},
                                            {"|KEYS,1\n1\n", one}});

  catalogue.set(
      XelCsvCode::KeyLineOverflow,
      {"key-line-overflow",
       XelCsvSeverity::Error,
       "number of more than 32 bits in a key line",
       "A field of a key line is a number that does not fit in 32 bits.",
       "The table cannot be made: getTableByName, or the constructor of XelCsvReader for a file of one table, "
       "throws XelOverflowException.",
       "Write 1 under each key column and 0 under the others.",
       {"|KEYS,1,3000000000\n1,2\n", one},
       {"|KEYS,1,0\n1,2\n", one}});
}
