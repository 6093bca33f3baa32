#include "check/XelCsvCodes.h"

void XelDescribeKeyCodes(XelCsvCatalogue& catalogue) {
  const XelCsvCheckParameters one = XelReadAsOneTable();

  catalogue.set(
      XelCsvCode::DuplicateKey,
      {"duplicate-key",
       XelCsvSeverity::Error,
       "two lines with one key",
       "The key columns of two lines of a table hold the same. Without a key line all columns are the key: the "
       "lines are equal.",
       "A cached table of a file of several tables cannot be made: getTableByName throws "
       "XelDuplicatedLineException. In a file of one table a cached reader ends the table at the second line "
       "without a word. A table that is not cached finds the first of the two.",
       "Remove one of the lines, or make more columns the key.",
       {"a\na\n", one},
       {"a\nb\n", one}});

  catalogue.set(XelCsvCode::KeyWithDash,
                {"key-with-dash",
                 XelCsvSeverity::Note,
                 "dash in a value of the key",
                 "A table has several key columns, and one of their values holds a dash.",
                 "The values of a key are joined with dashes: a-b and c make the same key as a and b-c, so that lines "
                 "which differ may have one key.",
                 "Nothing, as long as the dashes of one key column are the same in number; otherwise write another "
                 "character.",
                 {"|KEYS,1,1\na-b,c\n", one},
                 {"|KEYS,1,1\na_b,c\n", one}});
}
