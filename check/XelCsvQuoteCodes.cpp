#include "check/XelCsvCodes.h"

void XelDescribeQuoteCodes(XelCsvCatalogue& catalogue) {
  const XelCsvCheckParameters one = XelReadAsOneTable();

  catalogue.set(XelCsvCode::UnclosedQuote,
                {"unclosed-quote",
                 XelCsvSeverity::Error,
                 "quote that nothing closes in its line",
                 "A line holds an odd number of quotes: one was forgotten, one stands for inches, or a quoted field "
                 "holds a line end.",
                 "Quotes never span lines. The rest of the line, separators included, reads without a word as one "
                 "field; a line that was meant to go on is a line of its own.",
                 "Close the quote, write line ends inside fields otherwise, or read the file with another quote.",
                 {"a,\"b\nc,\"d\"\n", one},
                 {"a,\"b\"\nc,\"d\"\n", one}});

  catalogue.set(XelCsvCode::StrayQuote,
                {"stray-quote",
                 XelCsvSeverity::Warning,
                 "quote inside a field",
                 "A field does not begin with its quote, or goes on behind it.",
                 "Quotes switch quoting wherever they stand, and vanish: the field reads without them, and a separator "
                 "between two of them is text.",
                 "Put quotes around whole fields only, or read the file with another quote.",
                 {"a\"b\"c\n", one},
                 {"\"abc\"\n", one}});

  catalogue.set(XelCsvCode::DoubledQuote,
                {"doubled-quote",
                 XelCsvSeverity::Warning,
                 "doubled quote",
                 "Inside quotes stand two quotes in a row, with which many programs write one quote.",
                 R"(The first closes and the second opens again, and both vanish: "a""b" reads as ab.)",
                 "Use another character for quotes in texts, or read the file with another quote.",
                 {"\"a\"\"b\"\n", one},
                 {"\"ab\"\n", one}});
}
