// A pass over the data lines of a table.
#pragma once

#include "csv/line/XelCsvKey.h"
#include "csv/line/XelCsvLines.h"
#include "csv/table/XelCsvTableReaderI.h"

class XelCsvLineI;

// Reads the lines of a table from its first data line on: opens the file, skips comment and empty lines, keeps offset
// and number, formats a line when it is asked for, and closes the file on every way out. Lines are formatted out of the
// file's block into one buffer; a record is made only of the line that is handed out.
class XelCsvScan {
 public:
  // Opens the file with mode "r" or "rb" and stands before the first data line.
  // Throws XelFileNotFoundException, XelCsvReaderException when the file cannot be positioned, std::bad_alloc.
  XelCsvScan(XelCsvTableReaderI* scanned, const char* mode);

  // The same over a file that is open and stands before the first data line.
  XelCsvScan(XelCsvTableReaderI* scanned, XelCsvLines& opened) noexcept;

  // Goes to the next line that is neither a comment nor empty; false when the file ends before.
  bool next();

  // Whether the line begins in the table's region.
  bool isInside() const noexcept { return offset <= table->getEndOffset(); }

  // Whether next() read any line at all; otherwise nothing has changed but the line's formatting may.
  bool hasRead() const noexcept { return lines.hasRead(); }

  // Formats the line read last, comment or empty line included. Throws std::bad_alloc.
  void format();

  // Goes to the next data line that begins in the table's region and formats it; false when there is none. Mostly in one
  // look at its bytes. Throws std::bad_alloc.
  bool nextFormatted() {
    if (text.get() != nullptr && goToPlainLine()) return true;  // there is no text before the first line
    if (!next() || !isInside()) return false;
    format();
    return true;
  }

  // Formats the text that format() left once more; false when that changed nothing, nor ever will.
  bool formatAgain() noexcept;

  // Whether the formatted line's first field, trimmed, is the table's name.
  bool isOwn() const noexcept;

  // Throws XelCsvReaderException when the formatted line has fewer fields than the table has key columns.
  void checkNumberOfKeys() const;

  // The formatted line's key, which stays until another line is formatted or key is used again: one value lies in the
  // line; several are joined there too, where nothing but their terminators is between them, and the line's fields are
  // no longer apart then; others are joined in key. Throws XelFieldNotFoundException when the line lacks a key field,
  // std::bad_alloc.
  XelCsvSpan composeKey(XelCsvKey& key);

  // Whether the formatted line has this key. Throws XelFieldNotFoundException when it lacks a key field, whether or not
  // the fields before it match.
  bool hasKey(const char* key) const;

  // A record of the formatted line, which the caller deletes; its first field is trimmed in place when named, its key
  // fields when keyed. The scan is over then. Throws std::bad_alloc.
  XelCsvLineI* makeLine(bool named, bool keyed);

  // Of the line read last.
  long getOffset() const noexcept { return offset; }
  long getLineNumber() const noexcept { return lineNumber; }

  // The caller has gone behind this number of lines in the file that it opened.
  void passOver(long passed) noexcept { lineNumber += passed; }

 private:
  // Goes to the next line when it is a data line in the table's region, and formats it. False, and nothing has changed
  // but the text, when one look at its bytes does not tell.
  bool goToPlainLine() noexcept;

  // Joins the values of the key columns in the text; false when there is more to do.
  bool joinKey(XelCsvSpan& key) const noexcept;

  // A field of the formatted line as it is, and the same without the spaces around it.
  XelCsvSpan getField(long position) const noexcept {
    const bool isLast = position + 1 == table->getNumberOfFields();
    const char* end = isLast ? text.get() + table->getLineLength() : fields[position + 1];
    return {fields[position], end - 1};
  }
  XelCsvSpan getTrimmed(long position) const noexcept;

  // A key field without the spaces around it. Throws XelFieldNotFoundException.
  XelCsvSpan getKeyValue(long key) const;

  XelCsvTableReaderI* table;
  XelPaddedFormatter* padded;
  XelCsvLines own;     // the file, unless it was opened by the caller
  XelCsvLines& lines;  // the file that is read
  XelEnvBlock<char> text;
  XelEnvBlock<char*> fields;
  long offset;
  long lineNumber;
  bool isKeyInOnePiece;  // whether the table's key columns stand side by side in the order of the key
};
