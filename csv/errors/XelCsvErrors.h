// Every failure of the library: one function per failure, which picks the wording, builds the message and throws.
#pragma once

#include "xelcsv/XelEnv.h"

// Where a failure happens. The table is null for the table of a one-table file, and so are words that name it.
struct XelCsvSite {
  const char* file = nullptr;
  const char* table = nullptr;
};

// None of these returns. Names, keys and headings that are null stand in the message as the empty text. A message is
// cut to XelMessageSize - 1 bytes.
namespace XelCsvErrors {

// ---- The file.

// The file cannot be opened; message is the text of errorTest or of XelFormatOpenError.
[[noreturn]] void cannotOpen(const char* message);
[[noreturn]] void emptyFileName();
[[noreturn]] void noSeparatorOrCharacter();
[[noreturn]] void separatorIncludes(const char* separators, const char* what, char character);
[[noreturn]] void sameCharacter(const char* what1, char character1, const char* what2, char character2);

// The file cannot be positioned at the heading zone, at the data to look through, or at its start. Without a table's
// name the file's name stands in the message.
[[noreturn]] void corruptedTable(const XelCsvSite& at);

// The file cannot be positioned at the lines that an index is made of or points to. Without a table's name the file's
// name stands in the message.
[[noreturn]] void corruptedIndexedTable(const XelCsvSite& at);

// ---- Tables.

[[noreturn]] void duplicatedTable(const char* name);
[[noreturn]] void noTableForEndOffset(const char* name);
[[noreturn]] void tableNotFound(const char* name);
[[noreturn]] void tableNumberNotFound(long number, long numberOfTables);
[[noreturn]] void noTableSpecified(const char* file);
[[noreturn]] void multiTableFile(const char* file, const char* operation);
[[noreturn]] void uniqueTableFile(const char* file, const char* operation);
[[noreturn]] void noReaderForUniqueTable(const char* file);

// ---- Headings and keys.

[[noreturn]] void noHeadingLine(const XelCsvSite& at);
[[noreturn]] void headingNotFound(const XelCsvSite& at, const char* heading);
[[noreturn]] void notEnoughKeys(const XelCsvSite& at, long numberOfKeys);
[[noreturn]] void tooFewFieldsForKeys(const XelCsvSite& at, long numberOfKeys, long numberOfFields, long lineNumber);

// Two lines with one key; the first wording is the table handle's, the second that of getTableByName.
[[noreturn]] void duplicatedLine(const XelCsvSite& at, const char* key);
[[noreturn]] void duplicatedLineInTable(const char* table, const char* key);

// ---- Lines and fields.

// The scanning table has no such line.
[[noreturn]] void noLineScanned(const XelCsvSite& at, long number);
[[noreturn]] void noKeyScanned(const XelCsvSite& at, const char* key);

// The index of the cached table has no such line.
[[noreturn]] void noLineIndexed(const XelCsvSite& at, long number);
[[noreturn]] void noKeyIndexed(const XelCsvSite& at, const char* key);

// The index of the cached table lacks a line that its iterator asks for.
[[noreturn]] void noKeyIterated(const XelCsvSite& at, const char* key);

[[noreturn]] void fieldNotFound(const XelCsvSite& at, long position, long lineNumber, const char* operation);
[[noreturn]] void overflow(const XelCsvSite& at, long position, long lineNumber);

// As overflow(), from the getters with a default value.
[[noreturn]] void overflowBesideDefault(const XelCsvSite& at, long position, long lineNumber);

// A line whose number of fields is not that of its table; isMultiTable is the kind of file, which picks the class too.
[[noreturn]] void otherNumberOfFields(const XelCsvSite& at, bool isMultiTable, long fieldsOfTable, long lineNumber,
                                      long fieldsOfLine);

}  // namespace XelCsvErrors
