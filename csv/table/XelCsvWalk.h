// What an iterator over the lines of a table holds while it walks.
#pragma once

#include "csv/line/XelCsvLineI.h"
#include "csv/line/XelCsvLines.h"
#include "csv/table/XelCsvTableReaderI.h"

// The walk's own file, one buffer and one field array for all lines, and the one record over them. A line that a user
// copies into the record gets storage of its own, which goes when the next line comes.
class XelCsvWalk : public XelEnvResident {
 public:
  // Opens the table's file with mode "r" or "rb". Throws XelFileNotFoundException, std::bad_alloc.
  XelCsvWalk(XelCsvTableReaderI* walked, const char* mode);

  // Goes to a byte offset; false when the file cannot be positioned.
  bool seek(long offset) noexcept { return file.seek(offset); }

  // Reads the line that the file stands at; what cannot be read is an empty line. Throws std::bad_alloc.
  void readLine(long lineNumber);

  // Reads on to the next line that is neither a comment nor empty, as XelCsvLines does; the record stays as it is.
  bool skipCommentAndEmptyLines(long& lineNumber, long& offset);

  // Whether the last skipCommentAndEmptyLines() read any line at all.
  bool hasRead() const noexcept { return file.hasRead(); }

  // The line read last becomes the record.
  void formatLine(long lineNumber) noexcept;

  // The record's text is formatted once more; false when that changes nothing, nor ever will.
  bool formatAgain(long lineNumber) noexcept;

  // The record; it belongs to the walk.
  XelCsvLineI* getLine() noexcept { return &line; }

 private:
  XelCsvTableReaderI* table;
  XelCsvLines file;
  XelEnvBlock<char> buffer;
  XelEnvBlock<char*> fields;
  XelCsvLineI line;
};
