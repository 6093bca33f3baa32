// Checks of a file's bytes, whatever they are to mean: encoding, line ends, line length.
#pragma once

#include "check/XelCsvCheckContext.h"
#include "check/XelCsvUtf8.h"

class XelCsvByteChecks {
 public:
  // The context must outlive it.
  explicit XelCsvByteChecks(const XelCsvCheckContext& checked);

  // Looks at the next line. Stops the findings where the text is UTF-16, of which no line can be read.
  void check(const XelCsvCheckedLine& line);

  // Looks at the end of the file; the last line is the one that was looked at last, and may be a heading or key line that is
  // read as one of data too.
  void end(const XelCsvCheckedLine& last, bool isHeading);

 private:
  // What a byte may be, as bits.
  enum Feature : unsigned char { Nothing = 0, Nul = 1, Control = 2, CarriageReturn = 4, Above127 = 8 };
  enum class LineEnd { None, LineFeed, Both };

  void checkStart(const XelCsvCheckedLine& line);
  void checkLength(const XelCsvCheckedLine& line);
  void checkNul(const XelCsvCheckedLine& line);
  void checkControl(const XelCsvCheckedLine& line);
  void checkCarriageReturn(const XelCsvCheckedLine& line);
  void checkLineEnd(const XelCsvCheckedLine& line);
  void checkUtf8(const XelCsvCheckedLine& line);
  const char* findFeature(const XelCsvSpan& text, Feature feature) const noexcept;

  const XelCsvCheckContext& context;
  const XelCsvCheckParameters& parameters;
  XelCsvFindings& findings;
  unsigned char features[256];
  XelCsvUtf8 utf8;
  LineEnd firstEnd = LineEnd::None;
  bool hasMixedEnds = false;
};
