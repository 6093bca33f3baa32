#include "check/XelCsvCodes.h"

void XelDescribeByteCodes(XelCsvCatalogue& catalogue) {
  const XelCsvCheckParameters one = XelReadAsOneTable();
  const XelCsvCheckParameters many = XelReadAsManyTables();

  catalogue.set(XelCsvCode::Bom,
                {"bom",
                 XelCsvSeverity::Error,
                 "byte-order mark at the start of the file",
                 "The file begins with the three bytes EF BB BF, which many programs write in front of UTF-8 text and "
                 "do not show.",
                 "The library takes them for the beginning of the first field: a table's name, or the first value, "
                 "reads with them, so that a lookup by what is seen fails, a number reads as 0, and a comment is none. "
                 "In front of the headings of a one-table file they do no harm.",
                 "Save the file as UTF-8 without byte-order mark.",
                 {"\xEF\xBB\xBFStock,7\n", many},
                 {"Stock,7\n", many}});

  catalogue.set(XelCsvCode::Utf16,
                {"utf16",
                 XelCsvSeverity::Error,
                 "text in UTF-16",
                 "The text is written with two bytes a character, as some programs do that call this Unicode.",
                 "The library reads bytes: of each line it reads the first letter, for the zero byte behind it ends "
                 "the line. Nothing else of such a file is checked.",
                 "Save the file as UTF-8.",
                 {std::string("\xFF\xFE"
                              "a\0,\0b\0\n\0",
                              10),
                  one},
                 {"a,b\n", one}});

  catalogue.set(
      XelCsvCode::InvalidUtf8,
      {"invalid-utf8",
       XelCsvSeverity::Warning,
       "bytes that are not UTF-8",
       "A line holds bytes that do not make characters of UTF-8: the file is written in another encoding, "
       "such as Latin-1, or two encodings were mixed.",
       "The library reads bytes as they are, without a word. Names and keys are found only by the same bytes.",
       "Convert the file to UTF-8, or ask for names and keys in the encoding of the file.",
       {"caf\xE9\n", one},
       {"caf\xC3\xA9\n", one}});

  catalogue.set(XelCsvCode::Nul,
                {"nul",
                 XelCsvSeverity::Error,
                 "zero byte in a line",
                 "A line holds a byte 0. It comes from a damaged disk or from a program that wrote memory as it was.",
                 "The line ends at the zero byte: what is behind it in the line is not read, without a word.",
                 "Remove the byte, and look what else was lost in its place.",
                 {std::string("a\0b\n", 4), one},
                 {"ab\n", one}});

  catalogue.set(XelCsvCode::ControlCharacter,
                {"control-character",
                 XelCsvSeverity::Warning,
                 "control character in a line",
                 "A line holds a byte below 32, or 127, that is neither a tab nor a line end. It is not seen, and some "
                 "terminals act on it.",
                 "It reads without a word as a part of its field, so that a name or key is not found by what is seen.",
                 "Remove the byte.",
                 {"a\x1B"
                  "b\n",
                  one},
                 {"ab\n", one}});

  catalogue.set(
      XelCsvCode::LoneCr,
      {"lone-cr",
       XelCsvSeverity::Error,
       "carriage return inside a line",
       "A carriage return stands alone, without the line feed that ends a line: lines were joined, a field "
       "holds a line end, or the whole file is written with carriage returns as line ends.",
       "A carriage return ends the line: what is behind it, up to the line feed, is not read, without a word.",
       "End lines with a line feed, or with a carriage return and a line feed.",
       {"a\rb\n", one},
       {"a\r\nb\r\n", one}});

  catalogue.set(XelCsvCode::MixedEol,
                {"mixed-eol",
                 XelCsvSeverity::Note,
                 "two kinds of line ends",
                 "Some lines end with a line feed, others with a carriage return and a line feed: the file was written "
                 "by two programs, or joined of two.",
                 "Both are read the same.",
                 "Write the file with one kind of line end.",
                 {"a\r\nb\n", one},
                 {"a\nb\n", one}});

  catalogue.set(XelCsvCode::NoFinalEol,
                {"no-final-eol",
                 XelCsvSeverity::Note,
                 "last line without line feed",
                 "The file ends with a line that no line feed ends: it may have been cut off.",
                 "The line is read like any other. A heading or key line in this place is read as a line of data too, "
                 "and a table that is not cached gives its last line, cut to its first field, for every number behind "
                 "it.",
                 "End the last line with a line feed, and look whether lines are missing.",
                 {"a", one},
                 {"a\n", one}});

  const std::string most(9998, 'x');
  catalogue.set(XelCsvCode::LongLine,
                {"long-line",
                 XelCsvSeverity::Error,
                 "line of more than 9999 bytes",
                 "A line is longer than the library reads at once: 9999 bytes, its line feed included.",
                 "The library reads it as several lines without a word, cut in the middle of a field. The rest begins "
                 "with what is to be a table's name in a file of several tables, and counts as a line of its own.",
                 "Make the line shorter: put its columns into several tables.",
                 {most + "xyz\n", one},
                 {most + "\n", one}});
}
