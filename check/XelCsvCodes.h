// The kinds of findings by number, and where the catalogue's entries are written.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "xelcsv/XelCsvCheck.h"

// In the order of the catalogue.
enum class XelCsvCode : unsigned char {
  Bom,
  Utf16,
  InvalidUtf8,
  Nul,
  ControlCharacter,
  LoneCr,
  MixedEol,
  NoFinalEol,
  LongLine,
  CommentBeforeHeadings,
  CommentWithBlank,
  UnclosedQuote,
  StrayQuote,
  DoubledQuote,
  Ragged,
  BlankName,
  QuotedName,
  DuplicateTable,
  SplitTable,
  DuplicateHeading,
  EmptyHeading,
  BlankAroundName,
  HeadingAfterData,
  ForeignHeading,
  MarkerCase,
  UnknownMarker,
  KeyLineNoOnes,
  KeyLineOverflow,
  DuplicateKey,
  KeyWithDash,
  IntOverflow,
  NotANumber,
  TrailingText,
  DecimalMismatch,
  ReservedTableOrder,
  MissingDirectivesField,
  EmptyTable,
};

constexpr std::size_t XelCsvCodeCount = static_cast<std::size_t>(XelCsvCode::EmptyTable) + 1;

constexpr std::size_t XelIndexOf(XelCsvCode code) noexcept { return static_cast<std::size_t>(code); }

// The catalogue while it is written: each group of checks sets its entries.
class XelCsvCatalogue {
 public:
  XelCsvCatalogue() : codes(XelCsvCodeCount) {}
  void set(XelCsvCode code, XelCsvCheckCode entry) { codes[XelIndexOf(code)] = std::move(entry); }
  std::vector<XelCsvCheckCode> take() { return std::move(codes); }

 private:
  std::vector<XelCsvCheckCode> codes;
};

// How examples are read: one table; several; several whose lines may be spread.
XelCsvCheckParameters XelReadAsOneTable();
XelCsvCheckParameters XelReadAsManyTables();
XelCsvCheckParameters XelReadAsSplitTables();

void XelDescribeByteCodes(XelCsvCatalogue& catalogue);
void XelDescribeQuoteCodes(XelCsvCatalogue& catalogue);
void XelDescribeTableCodes(XelCsvCatalogue& catalogue);
void XelDescribeHeadingCodes(XelCsvCatalogue& catalogue);
void XelDescribeKeyCodes(XelCsvCatalogue& catalogue);
void XelDescribeColumnCodes(XelCsvCatalogue& catalogue);
