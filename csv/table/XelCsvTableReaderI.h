// What every way of reading one table shares: columns, keys, and where the table is in the file.
#pragma once

#include "csv/errors/XelCsvErrors.h"
#include "csv/line/XelCsvHeadings.h"
#include "csv/line/XelCsvText.h"
#include "csv/reader/XelCsvReaderI.h"
#include "env/XelArray.h"
#include "env/XelEnvOwned.h"

class XelCsvLineI;

// One table of a file, abstract. After construction its heading zone is fixed; what the last formatted line was, its
// number of fields and length, changes with every line. The file reader must outlive the use of the table; the
// destructor looks at neither.
class XelCsvTableReaderI : public XelEnvResident {
 public:
  // A reader of no table, to copy another into. Throws std::bad_alloc.
  explicit XelCsvTableReaderI(XelEnv environment);

  // Reads the heading zone of the table that begins at start; of the whole file when start is null or the file has one
  // table. When the file cannot be opened nothing is read: the creator asks getOpenError() and errno.
  // Throws XelCsvReaderException for a corrupted file, XelOverflowException for a number of a key line above 32 bits,
  // std::bad_alloc.
  XelCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName, const OffsetAndLineNumber* start);
  virtual ~XelCsvTableReaderI();
  XelCsvTableReaderI(const XelCsvTableReaderI&) = delete;
  XelCsvTableReaderI& operator=(const XelCsvTableReaderI&) = delete;

  // A line by its number among the table's data lines, a new record which the caller deletes.
  virtual XelCsvLineI* getLineByNumber(long number) = 0;

  // A line by its composed key, a new record which the caller deletes. The key is a string of exactly its length + 1
  // bytes of the environment; it is freed whenever this throws, and stays the caller's when the line comes back. A null
  // key is not found.
  virtual XelCsvLineI* getLineByKey(const char* key) = 0;

  // getLineByKey() with a key that goes back in every case.
  XelCsvLineI* findLine(XelEnvBlock<char> key);

  // Number of data lines.
  virtual long getNumberOfItems() = 0;

  // Where a named item begins: a table for the scanning reader, a line by its key for the cached one. Null when there
  // is none.
  virtual OffsetAndLineNumber* getOffsetAndLineNumber(const char* name) const = 0;

  // Gives back what was learned of the table's lines: headings, keys, index.
  virtual void clearTable() = 0;

  // Makes this reader a copy of another; its kind stays. Throws what the constructor throws, and this reader is as
  // before then. When the file cannot be opened nothing is copied: the creator asks getOpenError() and errno.
  virtual void copy(XelCsvTableReaderI* other) = 0;

  // The state that all kinds share, out of another reader into this empty one: columns, heading line, keys, region.
  void partialCopy(XelCsvTableReaderI* other);

  // Forgets heading line and keys.
  void partialClear() noexcept;

  // Number of columns.
  long getNumberOfColumns() const noexcept { return numberOfColumns; }

  // Whether there is a heading line with this heading. Trims the heading line's fields in place.
  bool isHeadingExists(const char* heading) const noexcept;

  // Column of a heading. Throws XelColumnHeaderNotFoundException. Trims the heading line's fields in place.
  long getPosition(const char* heading) const;

  // Prints the key columns on standard output. Answers true.
  bool printKeys() const;

  // Throws XelNumberOfFieldsException (one-table file) or XelCsvReaderException (several tables) unless the line has as
  // many fields as the line formatted last.
  void testNumberOfFields(XelCsvLineI* line) const;

  // Formats a zero-terminated raw line of at most XelLineSize bytes in place.
  void formatLine(char* line) noexcept;

  // Formats a raw line into XelLineSize bytes, and notes the starts of its fields when starts is not null (at most
  // XelLineSize of them).
  void formatLine(const XelCsvSpan& raw, char* to, char** starts) noexcept;

  // A line was formatted by other means.
  void setFormatted(const XelFormattedLine& formatted) noexcept {
    lineLength = formatted.length;
    numberOfFields = formatted.fields;
  }

  // Formats text that is formatted already, as far as its first field, once more in place. False when there was nothing
  // to change, nor ever will be.
  bool formatAgain(char* text, char** starts) noexcept;

  // As XelCsvReaderI::skipCommentAndEmptyLines.
  long skipCommentAndEmptyLines(XelCsvLines& lines, char* buffer, char comment, long* lineNumber, long* offset) const;

  // Opens the file. Throws XelFileNotFoundException.
  void open(XelCsvLines& lines, const char* mode, XelCsvReach reach) const;

  // Opens the file and stands at a byte offset of it. Throws XelFileNotFoundException, XelCsvReaderException.
  void openAt(XelCsvLines& lines, const char* mode, XelCsvReach reach, long offset) const;

  // A field is taken as a key value; throws XelFieldNotFoundException when the line has no such field.
  void checkKeyField(long position, long fieldsOfLine, long lineNumber) const;

  XelCsvSite getSite() const noexcept;
  XelEnv getEnv() const noexcept { return env; }
  XelCsvReaderI* getReader() const noexcept { return reader; }
  const char* getNameOfTable() const noexcept { return nameOfTable; }

  // The heading line's record, null when there is none. In a copy of a table without one it is a record without fields.
  XelCsvLineI* getFirstLine() const noexcept { return firstLine; }

  // The heading line's record, null when there is none or it has no fields.
  XelCsvLineI* getHeadingLine() const noexcept;

  long getNumberOfKeys() const noexcept { return keyPositions.getSize(); }
  long getKeyPosition(long key) const noexcept { return keyPositions[key]; }

  // Of the line formatted last.
  long getNumberOfFields() const noexcept { return numberOfFields; }
  long getLineLength() const noexcept { return lineLength; }

  // Where the data lines begin, and the greatest offset at which one of them may.
  long getFirstDataOffset() const noexcept { return firstDataOffset; }
  long getFirstDataLineNumber() const noexcept { return firstDataLineNumber; }
  long getEndOffset() const noexcept { return endOffset; }

  // Whether lines of other tables may stand between those of this one, so that each line is asked for its table's name.
  bool isSplit() const noexcept;

  // Whether a data line's first field names this table.
  bool isOwnName(const XelCsvSpan& name) const noexcept;

  // errno of the open that failed while the table was made or copied, 0 when none did.
  int getOpenError() const noexcept { return openError; }

  // Whether the table belongs to a file reader or an iterator, not to the user.
  bool isLent() const noexcept { return lent; }
  void setLent() noexcept { lent = true; }

 protected:
  // Opens the file, or remembers why not.
  bool tryOpen(XelCsvLines& lines) noexcept;

  // Exchanges what was learned of the table with another reader, the environment that it lives in too.
  void swapTable(XelCsvTableReaderI& other) noexcept;

  XelCsvLineI* firstLine = nullptr;
  long lineLength = 0;
  long numberOfColumns = 0;
  long numberOfFields = 0;
  XelCsvReaderI* reader = nullptr;
  const char* nameOfTable = nullptr;
  XelArray<long> keyPositions;
  XelCsvLines file;  // open only while the table is made or copied
  long firstDataOffset = 0;
  long endOffset = 0;
  long firstDataLineNumber = 0;
  XelEnv env;
  int openError = 0;
  bool lent = false;

 private:
  void readHeadingZone(const OffsetAndLineNumber* start);
  void addHeadingLine(const char* line, long lineNumber);
  void addKeyLine(const char* line, long lineNumber);

  mutable XelCsvHeadings headings;  // of firstLine
};
