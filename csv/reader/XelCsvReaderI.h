// A data file: its settings, the directory of its tables, and the way to them.
#pragma once

#include "csv/line/XelCsvFormat.h"
#include "csv/line/XelCsvLines.h"
#include "env/XelArray.h"
#include "env/XelEnvHashTable.h"
#include "env/XelEnvOwned.h"
#include "env/XelReaderHash.h"
#include "xelcsv/XelCsvIteratorI.h"

class XelCsvLineI;
class XelCsvTableReaderI;

// Where a line begins: its byte offset in the file, and its physical line number, counted from 0 with comment and empty
// lines.
struct OffsetAndLineNumber {
  long offset;
  long lineNumber;
};

// Names of the two directive tables. They are reserved when they are the first tables of a file.
extern const char* const XelCsvFormatTable;
extern const char* const XelDataSchemaTable;

// Implementation of a reader.
//
// A file of several tables is scanned once, when the reader is made, into a directory: the names in the order of the
// file, where each table's first line is and where its last line begins. A one-table file has no directory but one
// table reader, which the reader owns. Between two calls no file is open.
class XelCsvReaderI : public XelEnvResident {
 public:
  using CsvTableIteratorI = XelCsvTableIteratorI;

  // Copies the settings, and scans the file or makes the one table. When the file cannot be opened it is left without
  // tables: the creator asks getOpenError() and errno. When a table's name comes back without splitting the scan stops
  // there: the creator asks isDuplicatedTableFound(). Throws std::bad_alloc, XelCsvReaderException for a corrupted file
  // and what making a table throws.
  XelCsvReaderI(XelEnv environment, const char* file, long cached, long multiTable, long tableSplitting,
                const char* separatorSet, char decimalCharacter, char quoteCharacter, char commentCharacter);
  virtual ~XelCsvReaderI();
  XelCsvReaderI(const XelCsvReaderI&) = delete;
  XelCsvReaderI& operator=(const XelCsvReaderI&) = delete;

  // ---- Numbers. A derived reader may read them in its own way; the getters with a default value do not ask.

  // The value of a field's text; never fails.
  virtual double parseFloat(const char* text) const;

  // The value of a field's text; sets overflow to 1 and answers 0 when it does not fit in 32 bits, never sets it to 0.
  virtual long parseInt(const char* text, long& overflow) const;

  // ---- Tables by name and number. Each throws XelIncorrectCsvReaderUseException on the other kind of file.

  // A new reader of a table, which the caller deletes. Throws XelTableNotFoundException, XelDuplicatedLineException,
  // XelFileNotFoundException, XelCsvReaderException, XelOverflowException, std::bad_alloc.
  XelCsvTableReaderI* getTableByName(const char* name);
  XelCsvTableReaderI* getTableByNumber(long number);

  // Always throws; see XelCsvReader::getTable.
  XelCsvTableReaderI* getTable();

  // The table of a one-table file; it stays with the reader.
  XelCsvTableReaderI* getReaderForUniqueTableFile() const;

  // Number of tables, the reserved ones left out.
  long getNumberOfTables() const noexcept;

  // Number of reserved tables at the start of the directory: 0, 1 or 2.
  long getNumberOfReservedTables() const noexcept;

  // ---- The one table of a one-table file.

  // A new line record, which the caller deletes.
  XelCsvLineI* getLineByNumber(long number);

  // The same by composed key, a string of exactly its length + 1 bytes of the table's environment. It is freed when the
  // table throws, and stays the caller's when the line comes back or the file is of the other kind.
  XelCsvLineI* getLineByKey(const char* key);
  long getNumberOfItems();
  long getNumberOfColumns() const;
  XelCsvLineI* getFirstLine() const;
  bool isHeadingExists(const char* heading) const;
  long getNumberOfKeys() const;
  void printKeys() const;
  long getPosition(const char* heading) const;
  void testNumberOfFields(XelCsvLineI* line) const;

  // ---- Directives.

  double getCsvFormat();
  double getFileVersion();
  const char* getRequiredBy();

  // ---- The directory.

  // Where a table's first line is; null when there is no such table, or the name is null.
  OffsetAndLineNumber* getOffsetAndLineNumber(const char* name) const;

  // Offset of the first byte of a table's last line. Throws XelCsvReaderException when there is no such table.
  long getEndOffset(const char* name) const;
  bool isTableExists(const char* name) const { return getOffsetAndLineNumber(name) != nullptr; }

  // The directory's own copy of a table's name, which lives as long as the reader; null when there is no such table.
  const char* getStoredName(const char* name) const;

  // Name number index of the directory, reserved tables included; null when there is none.
  const char* getTableName(long index) const noexcept;

  // Tables found, reserved ones included; 1 for a one-table file.
  long getNumberOfAllTables() const noexcept { return numberOfTables; }

  // ---- Reading.

  // Reads on to the next line that is neither a comment nor empty into buffer, XelLineSize bytes, which keeps its
  // content when no line was read at all. Answers 1, or 0 when the file ended before. lineNumber and, when it is given,
  // offset are kept as XelCsvLines::skipCommentAndEmptyLines keeps them.
  static long skipCommentAndEmptyLines(XelCsvLines& lines, char* buffer, char commentCharacter, long* lineNumber,
                                       long* offset);

  // Whether a line holds only spaces and tabs.
  static bool isEmpty(const char* line) noexcept;

  // Cuts the line in place after its first field and answers it.
  char* getFirstField(char* line) const noexcept;

  // Removes the spaces at either end of a text in place.
  void trim(char* text) const noexcept;

  // The greatest character of a set, compared as signed char; 0 for the empty set.
  static char computeMaxChar(const char* set) noexcept;

  // ---- Settings and results.

  XelEnv getEnv() const noexcept { return env; }
  const char* getFileName() const noexcept { return fileName; }
  const XelCsvFormat& getFormat() const noexcept { return format; }
  const char* getSeparators() const noexcept { return separators; }
  char getComment() const noexcept { return comment; }
  char getQuote() const noexcept { return quote; }
  char getDecimal() const noexcept { return decimal; }
  char getMaxSeparator() const noexcept { return maxSeparator; }
  bool isCached() const noexcept { return cached != 0; }
  bool isTableSplittingAllowed() const noexcept { return allowTableSplitting != 0; }
  bool isMultiTable() const noexcept { return multiTable != 0; }

  // errno of the open that failed while the reader was made, 0 when none did.
  int getOpenError() const noexcept { return openError; }

  // Whether the scan stopped at a table's name that came back; getLineBuffer() then begins with the name.
  bool isDuplicatedTableFound() const noexcept { return duplicatedTable != 0; }
  const char* getLineBuffer() const noexcept { return lineBuffer; }

  // Whether the scan met a line without a name, and the number of the last such line.
  bool isEmptyNameFound() const noexcept { return emptyNameFound != 0; }
  long getEmptyNameLine() const noexcept { return emptyNameLine; }

  // Gives back everything that the reader owns.
  void clear() noexcept;

 private:
  // What the public constructor continues from: everything empty, so that the destructor runs when it throws.
  explicit XelCsvReaderI(XelEnv environment, const XelCsvFormat& lineFormat);

  void init(const char* file, const char* separatorSet, char decimalCharacter, char quoteCharacter,
            char commentCharacter);

  // Guards; their names are crossed with what they guard: the first lets only one-table files through.
  void testReaderForUniquetable(const char* operation) const;
  void testReaderForMultitable(const char* operation) const;

  long stockTableNamesAndOffsets();
  bool isNewTable(const char* name, const char* previousName) const;
  const char* addOffset(const char* name, OffsetAndLineNumber* record);
  bool isDuplicatedTable(const char* storedName, OffsetAndLineNumber* record) const noexcept;
  void copyNameToBuffer(const XelCsvSpan& name) noexcept;

  void setCsvFormat();
  void setRequiredByAndFileVersion();

  XelEnv env;
  char* fileName = nullptr;
  XelCsvLines file;  // open only during the scan
  XelEnvHashTable<const char*, OffsetAndLineNumber*> tables;
  XelEnvHashTable<const char*, long> endOffsets;
  XelArray<const char*> tableNames;
  long numberOfTables = 0;
  char comment = 0;
  char* separators = nullptr;
  char quote = 0;
  char decimal = 0;
  char maxSeparator = 0;
  long cached = 0;
  long allowTableSplitting = 0;
  long multiTable = 0;
  XelCsvTableReaderI* uniqueTable = nullptr;
  double csvFormat = 0.0;
  double fileVersion = 0.0;
  char* requiredBy = nullptr;
  char* lineBuffer = nullptr;
  long duplicatedTable = 0;
  long emptyNameFound = 0;
  long emptyNameLine = 0;
  XelCsvFormat format;
  int openError = 0;
};
