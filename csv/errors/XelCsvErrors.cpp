#include "csv/errors/XelCsvErrors.h"

#include <cstdarg>
#include <cstdio>

#include "xelcsv/XelCsvReader.h"

namespace {

constexpr long ReaderCode = 1;

// A message, formatted and cut to its size.
class Message {
 public:
  __attribute__((format(printf, 2, 3))) explicit Message(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
  }

  const char* get() const { return text; }

 private:
  char text[XelMessageSize];
};

template <class Exception>
[[noreturn]] void raise(const Message& message) {
  throw Exception(message.get(), ReaderCode);
}

// The text, or the empty one for null.
const char* orEmpty(const char* text) { return text == nullptr ? "" : text; }

// The table's name, or the file's where there is none.
const char* tableOrFile(const XelCsvSite& at) { return orEmpty(at.table != nullptr ? at.table : at.file); }

using Base = XelCsvReader::XelCsvReaderException;
using FileNotFound = XelCsvReader::XelFileNotFoundException;
using FieldNotFound = XelCsvReader::XelFieldNotFoundException;
using ColumnHeaderNotFound = XelCsvReader::XelColumnHeaderNotFoundException;
using ReaderParameter = XelCsvReader::XelCsvReaderParameterException;
using DuplicatedTable = XelCsvReader::XelDuplicatedTableException;
using TableNotFound = XelCsvReader::XelTableNotFoundException;
using IncorrectUse = XelCsvReader::XelIncorrectCsvReaderUseException;
using LineNotFound = XelCsvReader::XelLineNotFoundException;
using DuplicatedLine = XelCsvReader::XelDuplicatedLineException;
using Overflow = XelCsvReader::XelOverflowException;
using NumberOfFields = XelCsvReader::XelNumberOfFieldsException;

}  // namespace

// Kept, all through this file: misspellings, blanks doubled, missing or trailing, and class names in a message that are
// not the class thrown. Programs compare these texts.
namespace XelCsvErrors {

void cannotOpen(const char* message) { throw FileNotFound(message, ReaderCode); }

void emptyFileName() { throw FileNotFound("XelCsvReader::testFile : Empty file name", ReaderCode); }

void noSeparatorOrCharacter() {
  raise<ReaderParameter>(
      Message("XelCsvReader::XelCsvReaderParameterException : You must specify a value different of 0 for separator, "
              "decimal, quote and comment characters"));
}

void separatorIncludes(const char* separators, const char* what, char character) {
  raise<ReaderParameter>(Message(
      "XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = %s and a %s = %c  %s  must not be "
      "a separator. ",
      separators, what, character, what));
}

void sameCharacter(const char* what1, char character1, const char* what2, char character2) {
  raise<ReaderParameter>(Message(
      "XelCsvReader::XelCsvReader::testCharacter: you are using a %s  =  %c and  %s =  %c  You are not allowed to "
      "use a same character for %s and %s ",
      what1, character1, what2, character2, what1, what2));
}

void corruptedTable(const XelCsvSite& at) {
  raise<Base>(Message("XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table %s",
                      tableOrFile(at)));
}

void corruptedIndexedTable(const XelCsvSite& at) {
  raise<Base>(Message("XelCsvReader::XelCsvReaderException : corrupted file while trying to read data for table %s",
                      tableOrFile(at)));
}

void duplicatedTable(const char* name) {
  raise<DuplicatedTable>(Message(
      "XelCsvReader::XelDuplicatedTableException : Another table with name %s already exists. Table splitting is "
      "not specified. ",
      orEmpty(name)));
}

void noTableForEndOffset(const char* name) {
  raise<Base>(Message("XelCsvReader::XelCsvReaderException : No Table having this name %s.", orEmpty(name)));
}

void tableNotFound(const char* name) {
  raise<TableNotFound>(
      Message("XelCsvReader::XelTableNotFoundException : No Table having this name %s.", orEmpty(name)));
}

void tableNumberNotFound(long number, long numberOfTables) {
  raise<TableNotFound>(
      Message("XelCsvReader::XelTableNotFoundException : No Table number %ld.The number of tables is %ld.", number,
              numberOfTables));
}

void noTableSpecified(const char* file) {
  raise<TableNotFound>(
      Message("XelCsvReader::XelTableNotFoundException : No Table specified, the file %s is a multi-table file.",
              orEmpty(file)));
}

void multiTableFile(const char* file, const char* operation) {
  raise<IncorrectUse>(Message(
      "XelCsvReader::XelIncorrectCsvReaderUseException : %s is a multi-Table file. No table have been specified "
      "while trying to do a %s.",
      orEmpty(file), operation));
}

void uniqueTableFile(const char* file, const char* operation) {
  raise<IncorrectUse>(
      Message("XelCsvReader::XelIncorrectCsvReaderUseException : %s is a unique-Table file. cann't use this member "
              "function %s with this reader.",
              orEmpty(file), operation));
}

void noReaderForUniqueTable(const char* file) {
  raise<IncorrectUse>(Message(
      "XelCsvReader::XelIncorrectCsvReaderUseException : %s is a multi-Table file. There is no reader for unique "
      "table.",
      orEmpty(file)));
}

void noHeadingLine(const XelCsvSite& at) {
  if (at.table == nullptr) {
    raise<ColumnHeaderNotFound>(Message(
        "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in file %s ", orEmpty(at.file)));
  }
  raise<ColumnHeaderNotFound>(
      Message("XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in table %s ", at.table));
}

void headingNotFound(const XelCsvSite& at, const char* heading) {
  if (at.table == nullptr) {
    raise<ColumnHeaderNotFound>(
        Message("XelCsvReader::XelColumnHeaderNotFoundException : Heading %s not found", orEmpty(heading)));
  }
  raise<ColumnHeaderNotFound>(Message(
      "XelCsvReader::XelColumnHeaderNotFoundException : Heading %s not found in table %s", orEmpty(heading), at.table));
}

void notEnoughKeys(const XelCsvSite& at, long numberOfKeys) {
  if (at.table == nullptr) {
    raise<LineNotFound>(Message(
        "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : %ld", numberOfKeys));
  }
  raise<LineNotFound>(
      Message("XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : %ld for table %s",
              numberOfKeys, at.table));
}

void tooFewFieldsForKeys(const XelCsvSite& at, long numberOfKeys, long numberOfFields, long lineNumber) {
  if (at.table == nullptr) {
    raise<Base>(
        Message("XelCsvReader::XelCsvReaderException : corrupted file the number of keys (%ld) exceeds the number of "
                "fields of the current line (%ld), line number %ld",
                numberOfKeys, numberOfFields, lineNumber));
  }
  raise<Base>(Message(
      "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (%ld) exceeds the number of fields "
      "of the current line (%ld), line number %ld in table %s",
      numberOfKeys, numberOfFields, lineNumber, at.table));
}

void duplicatedLine(const XelCsvSite& at, const char* key) {
  if (at.table == nullptr) {
    raise<DuplicatedLine>(
        Message("XelCsvReader::XelDuplicatedLineException : Another line with key  %s already exists.", orEmpty(key)));
  }
  raise<DuplicatedLine>(
      Message("XelCsvReader::XelDuplicatedLineException : Another line with key  %s already exists in table %s",
              orEmpty(key), at.table));
}

void duplicatedLineInTable(const char* table, const char* key) {
  raise<DuplicatedLine>(
      Message("XelCsvReader::XelDuplicatedLineException : Another line with key  %s already exists In Table %s .",
              orEmpty(key), orEmpty(table)));
}

void noLineScanned(const XelCsvSite& at, long number) {
  if (at.table == nullptr) {
    raise<LineNotFound>(Message("XelCsvReader::XelLineNotFoundException : No line number %ld .", number));
  }
  raise<LineNotFound>(
      Message("XelCsvReader::XelLineNotFoundException : No line number %ld in table %s.", number, at.table));
}

void noKeyScanned(const XelCsvSite& at, const char* key) {
  if (at.table == nullptr) {
    raise<LineNotFound>(Message("XelCsvReader::XelLineNotFoundException : No line having key %s.", orEmpty(key)));
  }
  raise<LineNotFound>(
      Message("XelCsvReader::XelLineNotFoundException : No line having key %s in table %s.", orEmpty(key), at.table));
}

void noLineIndexed(const XelCsvSite& at, long number) {
  if (at.table == nullptr) {
    raise<LineNotFound>(Message("XelCsvReader::XelLineNotFoundException : No line number %ld ", number));
  }
  raise<LineNotFound>(
      Message("XelCsvReader::XelLineNotFoundException : No line number %ld in table %s", number, at.table));
}

void noKeyIndexed(const XelCsvSite& at, const char* key) {
  if (at.table == nullptr) {
    raise<LineNotFound>(Message("XelCsvReader::XelLineNotFoundException : No line having key %s .", orEmpty(key)));
  }
  raise<LineNotFound>(
      Message("XelCsvReader::XelLineNotFoundException : No line having key %s in table %s.", orEmpty(key), at.table));
}

void noKeyIterated(const XelCsvSite& at, const char* key) {
  if (at.table == nullptr) {
    raise<LineNotFound>(Message("XelCsvReader::XelLineNotFoundException : No line having key %s found.", orEmpty(key)));
  }
  raise<LineNotFound>(Message("XelCsvReader::XelLineNotFoundException : No line having key %s found in table %s.",
                              orEmpty(key), at.table));
}

void fieldNotFound(const XelCsvSite& at, long position, long lineNumber, const char* operation) {
  if (at.table == nullptr) {
    raise<FieldNotFound>(
        Message("XelCsvReader::XelFieldNotFoundException : Field Not Found at position %ld in line number %ld while "
                "trying %s",
                position, lineNumber, operation));
  }
  raise<FieldNotFound>(Message(
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position %ld in line number %ld, in table %s "
      "while trying %s",
      position, lineNumber, at.table, operation));
}

void overflow(const XelCsvSite& at, long position, long lineNumber) {
  if (at.table == nullptr) {
    raise<Overflow>(
        Message("XelCsvReader::XelOverflowException : OVERFLOW while reading field %ld  of line number %ld as integer",
                position, lineNumber));
  }
  raise<Overflow>(Message(
      "XelCsvReader::XelOverflowException : OVERFLOW while reading field %ld  of line number %ld in table %s as "
      "integer",
      position, lineNumber, at.table));
}

void overflowBesideDefault(const XelCsvSite& at, long position, long lineNumber) {
  if (at.table == nullptr) overflow(at, position, lineNumber);
  raise<Overflow>(
      Message("XelOverflowException : OVERFLOW while reading field %ld  of line number %ld in table %s as integer",
              position, lineNumber, at.table));
}

void otherNumberOfFields(const XelCsvSite& at, bool isMultiTable, long fieldsOfTable, long lineNumber,
                         long fieldsOfLine) {
  if (!isMultiTable) {
    raise<NumberOfFields>(Message(
        "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of the table = %ld and number of "
        "fields of line number %ld = %ld",
        fieldsOfTable, lineNumber, fieldsOfLine));
  }
  raise<Base>(
      Message("XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of table %s = %ld and number of "
              "fields of line number %ld = %ld",
              tableOrFile(at), fieldsOfTable, lineNumber, fieldsOfLine));
}

}  // namespace XelCsvErrors
