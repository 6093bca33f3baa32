// One formatted line with its fields.
#pragma once

#include "csv/line/XelCsvFormat.h"
#include "env/XelEnvOwned.h"

class XelCsvTableReaderI;

// A line record: the fields of a line, back to back in one block, and where each begins. It belongs to a table, which
// it asks for headings, name and number parsing; its destruction looks at no table. The number of fields is fixed when
// the record is built.
class XelCsvLineI : public XelEnvResident {
 public:
  // A record without text, fields or line number; table may be null.
  XelCsvLineI(XelEnv environment, XelCsvTableReaderI* table) noexcept;

  // A record of formatted text: as many fields as table formatted last. Throws std::bad_alloc.
  XelCsvLineI(const char* formatted, XelCsvTableReaderI* table, long number);

  // A record that takes over a block of XelLineSize bytes that holds the line that table formatted last.
  // Throws std::bad_alloc.
  XelCsvLineI(XelEnvBlock<char> formatted, XelCsvTableReaderI* table, long number);

  // The same with the starts of its fields, which point into the block. Throws std::bad_alloc.
  XelCsvLineI(XelEnvBlock<char> formatted, char* const* starts, XelCsvTableReaderI* table, long number);

  virtual ~XelCsvLineI();
  XelCsvLineI(const XelCsvLineI&) = delete;
  XelCsvLineI& operator=(const XelCsvLineI&) = delete;

  // Copies the record's number of fields out of formatted text, XelLineSize bytes at most, into storage of its own.
  // Throws std::bad_alloc.
  void init(const char* formatted);

  // Notes in starts where each field of the text begins, and answers the position after the last field. Never looks
  // beyond XelLineSize bytes: fields that are not there are empty.
  char* setFieldsToLine(char** starts) const noexcept;

  // Bytes that the record's number of fields take in formatted text, terminators included; XelLineSize at most.
  long computeLength(const char* formatted) const noexcept;

  // Uses the caller's storage without copying: a line that table formatted last, and an array for its fields. The
  // storage stays the caller's and is never freed by the record.
  void buildCsvLine(char* formatted, char** starts, long number, XelCsvTableReaderI* table) noexcept;

  // The same with the starts of the fields already in the array.
  void adoptFields(char* formatted, char** starts, long number, XelCsvTableReaderI* table) noexcept;

  // The same for another line, of count fields, of the table and in the storage that were adopted last.
  void adoptNext(long number, long count) noexcept {
    lineNumber = number;
    numberOfFields = count;
  }

  // Makes this record a copy of other, packed: only the fields. From null it becomes empty. Throws std::bad_alloc, the
  // record then is as before.
  void copy(const XelCsvLineI* other);

  // Exchanges the content with another record that is not an iterator's.
  void swap(XelCsvLineI& other) noexcept;

  // Throws XelFieldNotFoundException, naming the operation, unless 0 <= position < getNumberOfFields().
  void check(const char* operation, long position) const {
    if (position < 0 || position >= numberOfFields) throwFieldNotFound(operation, position);
  }

  // Whether a field holds no character. Throws XelFieldNotFoundException, and by heading
  // XelColumnHeaderNotFoundException.
  bool emptyFieldByPosition(long position) const;
  bool emptyFieldByHeader(const char* heading) const;

  // Removes the spaces at either end of a field in place and answers it; only for a position that is there.
  const char* trimField(long position) const noexcept {
    char* const field = fields[position];
    return isSurelyTrimmed(position) ? field : trim(field);
  }

  // Gives the record's own storage back and lets go of any other: no text, no fields.
  void clear() noexcept;

  long getNumberOfFields() const noexcept { return numberOfFields; }
  long getLineNumber() const noexcept { return lineNumber; }
  XelEnv getEnv() const noexcept { return env; }
  XelCsvTableReaderI* getTableReader() const noexcept { return tableReader; }
  char* getText() const noexcept { return text; }
  char** getFields() const noexcept { return fields; }

  // How often the record's text was replaced.
  long getNumberOfChanges() const noexcept { return changes; }

  // Points the record at another table, the one that keeps it.
  void setTableReader(XelCsvTableReaderI* table) noexcept { tableReader = table; }

 private:
  void take(XelEnvBlock<char>& newText, XelEnvBlock<char*>& newFields) noexcept;
  [[noreturn]] void throwFieldNotFound(const char* operation, long position) const;
  static const char* trim(char* field) noexcept;

  // Fields stand back to back, so that the byte before the next field ends this one, unless it was cut. One that was
  // trimmed before may look as if it were not, never the other way round.
  bool isSurelyTrimmed(long position) const noexcept {
    const char* const field = fields[position];
    if (*field == '\0') return true;
    if (*field == ' ' || position + 1 == numberOfFields) return false;
    const char* const end = fields[position + 1] - 1;
    return *end == '\0' && end[-1] != ' ';  // the field is not empty, so that it has a byte before its end
  }

  char* text = nullptr;
  char** fields = nullptr;
  XelCsvTableReaderI* tableReader;
  long lineNumber;
  XelEnv env;
  long numberOfFields;
  bool ownsStorage = false;
  long changes = 0;
};
