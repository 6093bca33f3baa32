// Handle of one line of a table: typed access to its fields.
#pragma once

#include "xelcsv/XelEnv.h"

class XelCsvLineI;
class XelCsvTableReader;

// One line of a table: typed access to its fields by position or by column heading.
//
// A handle of one pointer, copied freely; copies share the line. Positions count from 0; in a file of several tables
// field 0 is the table's name. A line belongs to whoever made it: a line from a table's or a reader's lookup lives
// until the next lookup of that handle, the current line of an iterator until its ++; copy() makes one that the user
// owns and ends. Whatever its owner, a line asks its table for headings, names and number parsing, so the table and its
// reader must outlive the use of the line. One thread at a time.
//
// A field is empty when it holds no character at all. Reading a field as text or as a float trims its spaces in place,
// for good: a field of blanks is not empty until it has been read so once, and empty from then on, for the getters with
// a default value too. Every getter throws XelFieldNotFoundException when the line has no such field (0 <= position <
// getNumberOfFields()); a getter by heading throws XelColumnHeaderNotFoundException when the table has no heading line
// or no such heading. Numbers are read as strtod and strtol do in the process's locale, after the file's decimal
// character has become '.'.
//
// Using an empty handle is a mistake of the caller: an assertion where the library is built without NDEBUG.
class XELCSV_API XelCsvLine {
 public:
  // An empty handle: no line.
  XelCsvLine() = default;

  // A line over an existing record, which stays its owner's; null gives an empty handle.
  explicit XelCsvLine(XelCsvLineI* record) : impl(record) {}

  // A line built from text: formatted fields, each zero-terminated, back to back, as many as the line that was
  // read last through tableReader, by whatever operation. text must hold so many fields or be 10000 bytes long; no more
  // than 10000 bytes of it are read. The fields are copied; the user owns the line and ends it. lineNumber stands in
  // messages. Throws std::bad_alloc.
  XelCsvLine(const char* text, XelCsvTableReader tableReader, long lineNumber);

  // Value of the field as a float; 0.0 when the field is empty or holds no number, text after the number is ignored.
  // "+INF", "+1.#INF", "+Inf" and "+Infinity" are XelGetInfinity(), and so is a number too large for a double; with "-"
  // its negative.
  double getFloatByPosition(long position) const;

  // Value of the field as an integer, -2147483648 to 2147483647; 0 when the field is empty or holds no number. Text
  // after the digits is ignored, a fraction too. Throws XelOverflowException when the value does not fit in 32 bits.
  long getIntByPosition(long position) const;

  // Text of the field, zero-terminated. The pointer is into the line and dies with it.
  const char* getStringByPosition(long position) const;

  // The same by column heading.
  double getFloatByHeader(const char* heading) const;
  long getIntByHeader(const char* heading) const;
  const char* getStringByHeader(const char* heading) const;

  // The same with a value for an empty field. A missing field or an unknown heading throws all the same. "U" reads as
  // XelGetInfinity() here, and here alone. The getters of numbers with a default value always read them as said above,
  // also where a reader has a way of its own to read numbers.
  double getFloatByPositionOrDefaultValue(long position, double value) const;
  double getFloatByHeaderOrDefaultValue(const char* heading, double value) const;

  // The same with a value for an empty field.
  long getIntByPositionOrDefaultValue(long position, long value) const;
  long getIntByHeaderOrDefaultValue(const char* heading, long value) const;

  // The same with a value for an empty field; the default comes back as the very pointer that was given.
  const char* getStringByPositionOrDefaultValue(long position, const char* value) const;
  const char* getStringByHeaderOrDefaultValue(const char* heading, const char* value) const;

  // Whether the field is empty; reads nothing and trims nothing. Throws as the getters do.
  bool emptyFieldByPosition(long position) const;
  bool emptyFieldByHeader(const char* heading) const;

  // Number of the line in the file, counted from 0, comment and empty lines included.
  long getLineNumber() const;

  // Number of fields of the line.
  long getNumberOfFields() const;

  // The fields as they stand, spaces included until a getter trims them: getNumberOfFields() zero-terminated texts
  // inside the line; the array and the texts die with the line.
  char** getFields() const;

  // The environment that the line lives in.
  XelEnv getEnv() const;

  // Prints one line "Key 0 (Heading) = value" per key column on standard output, "Key 0 (Column 1) = value" when there
  // is no heading line, "There is no key for line number 5" when there is no key column, "Empty Line!" for a line
  // without fields. Headings are those of XelCsvTableReader::printKeys. Answers true. Throws XelFieldNotFoundException
  // when the heading line is too short.
  bool printValueOfKeys() const;

  // Makes this line a copy of other; the two share nothing but their table, which must outlive the use of both. An
  // empty handle gets a new line in other's environment, which the user owns and ends; an existing line is overwritten,
  // and its fields then live in other's environment, which must outlive it too. From an empty handle an existing line
  // becomes a line without fields. Throws std::bad_alloc.
  void copy(const XelCsvLine& other);

  // Destroys a line that the user owns (built from text, or made by copy() into an empty handle); any other is only let
  // go. The handle is empty afterwards; twice is harmless.
  void end();

  // Whether the handle holds no line.
  bool isEmpty() const { return impl == nullptr; }

  // The record behind the handle, null for an empty one.
  XelCsvLineI* getImpl() const { return impl; }

 private:
  XelCsvLineI* impl = nullptr;
  bool users = false;  // the user ends the line; known here, for another's may be gone when the handle ends
};
