#include "check/XelCsvCodes.h"

void XelDescribeTableCodes(XelCsvCatalogue& catalogue) {
  const XelCsvCheckParameters one = XelReadAsOneTable();
  const XelCsvCheckParameters many = XelReadAsManyTables();
  const XelCsvCheckParameters split = XelReadAsSplitTables();

  catalogue.set(
      XelCsvCode::Ragged,
      {"ragged",
       XelCsvSeverity::Error,
       "line with more or fewer fields than the table has columns",
       "A line of data has another number of fields than the heading line names, or, where there is none, than "
       "the table's key line or first line of data has. A separator was forgotten or stands in a text without "
       "quotes.",
       "Asking for a missing field throws XelFieldNotFoundException; where it is a field of the key, a cached "
       "table cannot be made at all. A field too many is read by position only.",
       "Bring the line to the number of the columns: empty fields are two separators in a row; put a text with "
       "a separator into quotes.",
       {"|NAMES,a,b\n1\n", one},
       {"|NAMES,a,b\n1,2\n", one}});

  catalogue.set(
      XelCsvCode::BlankName,
      {"blank-name",
       XelCsvSeverity::Error,
       "line without the name of a table",
       "In a file of several tables each line begins with the name of its table, and this one with an empty or "
       "blank field, or with a bar.",
       "The line belongs to no table and is not read. Between two lines of one table, without table splitting, "
       "it reads without a word as a line of that table. With a bar it belongs to a table whose name is empty, "
       "where it does not stand in front of the first table.",
       "Write the table's name in front, or read the file as one table.",
       {",1\nStock,2\n", many},
       {"Stock,1\nStock,2\n", many}});

  catalogue.set(
      XelCsvCode::QuotedName,
      {"quoted-name",
       XelCsvSeverity::Error,
       "name of a table in quotes",
       "The name of a table stands in quotes, as programs write that quote every text.",
       "The name of a table ends at the first separator, whatever quotes say, and quotes belong to it: "
       "getTableByName of the name without them throws XelTableNotFoundException. With table splitting a table "
       "of a quoted name has no lines.",
       "Write the name without quotes.",
       {"\"Stock\",1\n", many},
       {"Stock,1\n", many}});

  catalogue.set(XelCsvCode::DuplicateTable,
                {"duplicate-table",
                 XelCsvSeverity::Error,
                 "table that comes back behind another",
                 "Lines of a table stand in two places, with lines of other tables between them, and the file is read "
                 "without table splitting.",
                 "The constructor of XelCsvReader throws XelDuplicatedTableException.",
                 "Bring the lines of each table together, or read the file with table splitting.",
                 {"Stock,1\nPrice,1\nStock,2\n", many},
                 {"Stock,1\nStock,2\nPrice,1\n", many}});

  catalogue.set(XelCsvCode::SplitTable,
                {"split-table",
                 XelCsvSeverity::Note,
                 "table in several places",
                 "Lines of a table stand in two or more places, with lines of other tables between them.",
                 "With table splitting they read as one table. A lookup reads the lines between them too.",
                 "Bring the lines of each table together where lookups are to be fast, and for readers without table "
                 "splitting.",
                 {"Stock,1\nPrice,1\nStock,2\n", split},
                 {"Stock,1\nStock,2\nPrice,1\n", split}});

  catalogue.set(XelCsvCode::ReservedTableOrder,
                {"reserved-table-order",
                 XelCsvSeverity::Warning,
                 "reserved table that is not at the start",
                 "XELO_CSV_FORMAT is not the first table of the file, or XELO_DATA_SCHEMA is neither the first nor the "
                 "second one behind it.",
                 "The table counts like any other: getNumberOfTables() includes it and a TableIterator visits it. The "
                 "getters of versions find it wherever it is.",
                 "Put XELO_CSV_FORMAT first and XELO_DATA_SCHEMA behind it.",
                 {"Stock,1\nXELO_CSV_FORMAT,1\n", many},
                 {"XELO_CSV_FORMAT,1\nStock,1\n", many}});

  catalogue.set(
      XelCsvCode::MissingDirectivesField,
      {"missing-directives-field",
       XelCsvSeverity::Error,
       "reserved table without one of its fields",
       "The first line of XELO_CSV_FORMAT holds the version of the format, that of XELO_DATA_SCHEMA what "
       "requires the data and the version of the data; one of them is missing.",
       "getCsvFormat(), or getRequiredBy() and getFileVersion(), throw XelFieldNotFoundException; where the version "
       "of the data is missing, only the first of these calls, and the version is 0 from then on.",
       "Add the field, or remove the line.",
       {"XELO_DATA_SCHEMA,planner\n", many},
       {"XELO_DATA_SCHEMA,planner,1\n", many}});

  catalogue.set(
      XelCsvCode::EmptyTable,
      {"empty-table",
       XelCsvSeverity::Note,
       "table without lines of data",
       "A table has heading or key lines and no line of data, or the file has no line that belongs to a table.",
       "The table is there and has no lines: getNumberOfItems() answers 0.",
       "Nothing, where the table is to be empty; otherwise look where its lines are.",
       {"Stock|NAMES,item\n", many},
       {"Stock|NAMES,item\nStock,1\n", many}});
}
